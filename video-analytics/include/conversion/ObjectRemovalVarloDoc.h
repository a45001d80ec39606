#pragma once

#include <ObjectRemovalConfig.h>
#include <frame/BehaviorDoc.h>

namespace profile_conversion::objectremoval
{

using VarloDoc = frame::BehaviorDoc<Config>;

} // namespace profile_conversion::objectremoval
