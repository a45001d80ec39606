#pragma once

#include <ObjectRemovalConfig.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{
namespace objectremoval
{

class VarloDoc : public frame::BehaviorDoc<Config>
{
};

class OnvifDoc : public frame::EngineRuleDoc<Config>
{
};

} // namespace objectremoval

class ObjectRemovalConverter
    : public frame::EngineBehaviorConverter<objectremoval::Config, objectremoval::VarloDoc,
                                            objectremoval::OnvifDoc>
{
};

} // namespace profile_conversion
