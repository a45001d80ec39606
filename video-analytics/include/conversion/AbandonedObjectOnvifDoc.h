#pragma once

#include <AbandonedObjectConfig.h>
#include <frame/EngineRuleDoc.h>

namespace profile_conversion::abandonedobject
{

using OnvifDoc = frame::EngineRuleDoc<Config>;

} // namespace profile_conversion::abandonedobject
