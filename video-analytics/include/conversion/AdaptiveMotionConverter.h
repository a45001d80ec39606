#pragma once

#include <AdaptiveMotionConfig.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{
namespace adaptivemotion
{

class VarloDoc : public frame::BehaviorDoc<Config>
{
};

class OnvifDoc : public frame::RuleDoc<Config>
{
};

} // namespace adaptivemotion

class AdaptiveMotionConverter
    : public frame::BehaviorConverter<adaptivemotion::Config, adaptivemotion::VarloDoc,
                                      adaptivemotion::OnvifDoc>
{
};

} // namespace profile_conversion
