#pragma once

#include <LoiteringOnvifDoc.h>
#include <LoiteringVarloDoc.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{

class LoiteringConverter
    : public frame::BehaviorConverter<loitering::Config, loitering::VarloDoc, loitering::OnvifDoc>
{
};

} // namespace profile_conversion
