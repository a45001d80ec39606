#pragma once

#include <CameraSabotageOnvifDoc.h>
#include <CameraSabotageVarloDoc.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{

class CameraSabotageConverter
    : public frame::BehaviorConverter<camerasabotage::Config, camerasabotage::VarloDoc,
                                      camerasabotage::OnvifDoc>
{
};

} // namespace profile_conversion
