#pragma once

#include <DirectionalMotionConfig.h>
#include <frame/BehaviorDoc.h>

namespace profile_conversion::directionalmotion
{

class VarloDoc : public frame::BehaviorDoc<Config>
{
};

} // namespace profile_conversion::directionalmotion
