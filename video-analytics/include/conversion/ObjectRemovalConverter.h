#pragma once

#include <ObjectRemovalOnvifDoc.h>
#include <ObjectRemovalVarloDoc.h>
#include <frame/EngineBehaviorConverter.h>

namespace profile_conversion
{

using ObjectRemovalConverter =
    frame::EngineBehaviorConverter<objectremoval::Config, objectremoval::VarloDoc, objectremoval::OnvifDoc>;

} // namespace profile_conversion
