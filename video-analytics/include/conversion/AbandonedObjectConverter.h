#pragma once

#include <AbandonedObjectOnvifDoc.h>
#include <AbandonedObjectVarloDoc.h>
#include <frame/EngineBehaviorConverter.h>

namespace profile_conversion
{

using AbandonedObjectConverter =
    frame::EngineBehaviorConverter<abandonedobject::Config, abandonedobject::VarloDoc,
                                   abandonedobject::OnvifDoc>;

} // namespace profile_conversion
