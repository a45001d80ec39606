#pragma once

#include <LoiteringConfig.h>
#include <frame/RuleDoc.h>

namespace profile_conversion::loitering
{

using OnvifDoc = frame::RuleDoc<Config>;

} // namespace profile_conversion::loitering
