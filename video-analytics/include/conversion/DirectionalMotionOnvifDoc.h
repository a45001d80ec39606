#pragma once

#include <DirectionalMotionConfig.h>
#include <frame/RuleDoc.h>

namespace profile_conversion::directionalmotion
{

class OnvifDoc : public frame::EngineRuleDoc<Config>
{
};

} // namespace profile_conversion::directionalmotion
