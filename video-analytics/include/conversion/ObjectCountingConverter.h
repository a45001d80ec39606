#pragma once

#include <ObjectCountingOnvifDoc.h>
#include <ObjectCountingVarloDoc.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{

class ObjectCountingConverter
    : public frame::BehaviorConverter<objectcounting::Config, objectcounting::VarloDoc,
                                      objectcounting::OnvifDoc>
{
};

} // namespace profile_conversion
