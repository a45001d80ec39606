#pragma once

#include <AdaptiveMotionConfig.h>
#include <frame/RuleDoc.h>

namespace profile_conversion::adaptivemotion
{

class OnvifDoc : public frame::RuleDoc<Config>
{
};

} // namespace profile_conversion::adaptivemotion
