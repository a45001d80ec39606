#pragma once

#include <AbandonedObjectOnvifDoc.h>
#include <AbandonedObjectVarloDoc.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{

class AbandonedObjectConverter
    : public frame::EngineBehaviorConverter<abandonedobject::Config, abandonedobject::VarloDoc,
                                            abandonedobject::OnvifDoc>
{
};

} // namespace profile_conversion
