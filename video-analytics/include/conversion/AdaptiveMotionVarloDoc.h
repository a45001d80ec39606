#pragma once

#include <AdaptiveMotionConfig.h>
#include <frame/BehaviorDoc.h>

namespace profile_conversion::adaptivemotion
{

class VarloDoc : public frame::BehaviorDoc<Config>
{
};

} // namespace profile_conversion::adaptivemotion
