#pragma once

#include <DirectionalMotionConfig.h>
#include <frame/BehaviorDoc.h>

namespace profile_conversion::directionalmotion
{

using VarloDoc = frame::BehaviorDoc<Config>;

} // namespace profile_conversion::directionalmotion
