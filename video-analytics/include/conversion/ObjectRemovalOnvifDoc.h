#pragma once

#include <ObjectRemovalConfig.h>
#include <frame/RuleDoc.h>

namespace profile_conversion::objectremoval
{

class OnvifDoc : public frame::EngineRuleDoc<Config>
{
};

} // namespace profile_conversion::objectremoval
