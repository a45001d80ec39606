#pragma once

#include <LoiteringConfig.h>
#include <frame/BehaviorDoc.h>

namespace profile_conversion::loitering
{

class VarloDoc : public frame::BehaviorDoc<Config>
{
    // Without a use: this behavior has no settings in an engine.
    std::string m_engineId;
    std::string m_engineConfig;
};

} // namespace profile_conversion::loitering
