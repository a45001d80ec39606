#pragma once

#include <AdaptiveMotionOnvifDoc.h>
#include <AdaptiveMotionVarloDoc.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{

class AdaptiveMotionConverter
    : public frame::BehaviorConverter<adaptivemotion::Config, adaptivemotion::VarloDoc,
                                      adaptivemotion::OnvifDoc>
{
};

} // namespace profile_conversion
