#pragma once

#include <StoppedVehicleOnvifDoc.h>
#include <StoppedVehicleVarloDoc.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{

class StoppedVehicleConverter
    : public frame::EngineBehaviorConverter<stoppedvehicle::Config, stoppedvehicle::VarloDoc,
                                            stoppedvehicle::OnvifDoc>
{
};

} // namespace profile_conversion
