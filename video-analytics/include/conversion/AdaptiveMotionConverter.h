#pragma once

#include <AdaptiveMotionOnvifDoc.h>
#include <AdaptiveMotionVarloDoc.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{

using AdaptiveMotionConverter =
    frame::BehaviorConverter<adaptivemotion::Config, adaptivemotion::VarloDoc, adaptivemotion::OnvifDoc>;

} // namespace profile_conversion
