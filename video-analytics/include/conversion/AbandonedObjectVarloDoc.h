#pragma once

#include <AbandonedObjectConfig.h>
#include <frame/StillObjectVarloDoc.h>

namespace profile_conversion::abandonedobject
{

using VarloDoc = frame::StillObjectVarloDoc<Config>;

} // namespace profile_conversion::abandonedobject
