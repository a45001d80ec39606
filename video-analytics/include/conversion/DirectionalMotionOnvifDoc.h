#pragma once

#include <DirectionalMotionConfig.h>
#include <frame/EngineRuleDoc.h>

namespace profile_conversion::directionalmotion
{

using OnvifDoc = frame::EngineRuleDoc<Config>;

} // namespace profile_conversion::directionalmotion
