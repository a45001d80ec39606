#pragma once

#include <DirectionalMotionOnvifDoc.h>
#include <DirectionalMotionVarloDoc.h>
#include <frame/EngineBehaviorConverter.h>

namespace profile_conversion
{

using DirectionalMotionConverter =
    frame::EngineBehaviorConverter<directionalmotion::Config, directionalmotion::VarloDoc,
                                   directionalmotion::OnvifDoc>;

} // namespace profile_conversion
