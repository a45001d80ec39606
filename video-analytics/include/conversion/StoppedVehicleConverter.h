#pragma once

#include <StoppedVehicleOnvifDoc.h>
#include <StoppedVehicleVarloDoc.h>
#include <frame/EngineBehaviorConverter.h>

namespace profile_conversion
{

using StoppedVehicleConverter =
    frame::EngineBehaviorConverter<stoppedvehicle::Config, stoppedvehicle::VarloDoc,
                                   stoppedvehicle::OnvifDoc>;

} // namespace profile_conversion
