#pragma once

#include <LoiteringConfig.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{
namespace loitering
{

class VarloDoc : public frame::BehaviorDoc<Config>
{
    // Without a use: this behavior has no settings in an engine.
    std::string m_engineId;
    std::string m_engineConfig;
};

class OnvifDoc : public frame::RuleDoc<Config>
{
};

} // namespace loitering

class LoiteringConverter
    : public frame::BehaviorConverter<loitering::Config, loitering::VarloDoc, loitering::OnvifDoc>
{
};

} // namespace profile_conversion
