#pragma once

#include <AbandonedObjectConfig.h>
#include <frame/RuleDoc.h>

namespace profile_conversion::abandonedobject
{

class OnvifDoc : public frame::EngineRuleDoc<Config>
{
};

} // namespace profile_conversion::abandonedobject
