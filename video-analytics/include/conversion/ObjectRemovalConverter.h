#pragma once

#include <ObjectRemovalOnvifDoc.h>
#include <ObjectRemovalVarloDoc.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{

class ObjectRemovalConverter
    : public frame::EngineBehaviorConverter<objectremoval::Config, objectremoval::VarloDoc,
                                            objectremoval::OnvifDoc>
{
};

} // namespace profile_conversion
