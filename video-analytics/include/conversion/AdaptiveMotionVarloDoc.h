#pragma once

#include <AdaptiveMotionConfig.h>
#include <frame/BehaviorDoc.h>

namespace profile_conversion::adaptivemotion
{

using VarloDoc = frame::BehaviorDoc<Config>;

} // namespace profile_conversion::adaptivemotion
