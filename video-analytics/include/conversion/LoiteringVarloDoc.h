#pragma once

#include <LoiteringConfig.h>
#include <frame/BehaviorDoc.h>

namespace profile_conversion::loitering
{

using VarloDoc = frame::BehaviorDoc<Config>;

} // namespace profile_conversion::loitering
