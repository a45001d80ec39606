#pragma once

#include <StoppedVehicleConfig.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{
namespace stoppedvehicle
{

class VarloDoc : public frame::StillObjectVarloDoc<Config>
{
};

class OnvifDoc : public frame::EngineRuleDoc<Config>
{
};

} // namespace stoppedvehicle

class StoppedVehicleConverter
    : public frame::EngineBehaviorConverter<stoppedvehicle::Config, stoppedvehicle::VarloDoc,
                                            stoppedvehicle::OnvifDoc>
{
};

} // namespace profile_conversion
