#pragma once

#include <ObjectRemovalConfig.h>
#include <frame/EngineRuleDoc.h>

namespace profile_conversion::objectremoval
{

using OnvifDoc = frame::EngineRuleDoc<Config>;

} // namespace profile_conversion::objectremoval
