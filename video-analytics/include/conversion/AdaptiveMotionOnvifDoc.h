#pragma once

#include <AdaptiveMotionConfig.h>
#include <frame/RuleDoc.h>

namespace profile_conversion::adaptivemotion
{

using OnvifDoc = frame::RuleDoc<Config>;

} // namespace profile_conversion::adaptivemotion
