#pragma once

#include <StoppedVehicleConfig.h>
#include <frame/RuleDoc.h>

namespace profile_conversion::stoppedvehicle
{

class OnvifDoc : public frame::EngineRuleDoc<Config>
{
};

} // namespace profile_conversion::stoppedvehicle
