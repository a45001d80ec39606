#pragma once

#include <ObjectCountingConfig.h>
#include <frame/BehaviorDoc.h>

namespace profile_conversion::objectcounting
{

class VarloDoc : public frame::BehaviorDoc<Config>
{
};

} // namespace profile_conversion::objectcounting
