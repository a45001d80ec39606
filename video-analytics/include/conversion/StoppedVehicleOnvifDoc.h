#pragma once

#include <StoppedVehicleConfig.h>
#include <frame/EngineRuleDoc.h>

namespace profile_conversion::stoppedvehicle
{

using OnvifDoc = frame::EngineRuleDoc<Config>;

} // namespace profile_conversion::stoppedvehicle
