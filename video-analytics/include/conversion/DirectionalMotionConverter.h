#pragma once

#include <DirectionalMotionConfig.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{
namespace directionalmotion
{

class VarloDoc : public frame::BehaviorDoc<Config>
{
};

class OnvifDoc : public frame::EngineRuleDoc<Config>
{
};

} // namespace directionalmotion

class DirectionalMotionConverter
    : public frame::EngineBehaviorConverter<directionalmotion::Config, directionalmotion::VarloDoc,
                                            directionalmotion::OnvifDoc>
{
};

} // namespace profile_conversion
