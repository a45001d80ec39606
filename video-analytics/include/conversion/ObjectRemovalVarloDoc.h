#pragma once

#include <ObjectRemovalConfig.h>
#include <frame/BehaviorDoc.h>

namespace profile_conversion::objectremoval
{

class VarloDoc : public frame::BehaviorDoc<Config>
{
};

} // namespace profile_conversion::objectremoval
