#pragma once

#include <StoppedVehicleConfig.h>

namespace profile_conversion::stoppedvehicle
{

class VarloDoc : public frame::StillObjectVarloDoc<Config>
{
};

} // namespace profile_conversion::stoppedvehicle
