#pragma once

#include <DirectionalMotionOnvifDoc.h>
#include <DirectionalMotionVarloDoc.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{

class DirectionalMotionConverter
    : public frame::EngineBehaviorConverter<directionalmotion::Config, directionalmotion::VarloDoc,
                                            directionalmotion::OnvifDoc>
{
};

} // namespace profile_conversion
