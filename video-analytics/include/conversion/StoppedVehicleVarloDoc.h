#pragma once

#include <StoppedVehicleConfig.h>
#include <frame/StillObjectVarloDoc.h>

namespace profile_conversion::stoppedvehicle
{

using VarloDoc = frame::StillObjectVarloDoc<Config>;

} // namespace profile_conversion::stoppedvehicle
