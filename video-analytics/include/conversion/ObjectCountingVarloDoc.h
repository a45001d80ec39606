#pragma once

#include <ObjectCountingConfig.h>
#include <frame/BehaviorDoc.h>

namespace profile_conversion::objectcounting
{

using VarloDoc = frame::BehaviorDoc<Config>;

} // namespace profile_conversion::objectcounting
