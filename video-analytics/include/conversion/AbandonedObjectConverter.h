#pragma once

#include <AbandonedObjectConfig.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{
namespace abandonedobject
{

class VarloDoc : public frame::StillObjectVarloDoc<Config>
{
};

class OnvifDoc : public frame::EngineRuleDoc<Config>
{
};

} // namespace abandonedobject

class AbandonedObjectConverter
    : public frame::EngineBehaviorConverter<abandonedobject::Config, abandonedobject::VarloDoc,
                                            abandonedobject::OnvifDoc>
{
};

} // namespace profile_conversion
