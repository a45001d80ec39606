#pragma once

#include <AbandonedObjectConfig.h>

namespace profile_conversion::abandonedobject
{

class VarloDoc : public frame::StillObjectVarloDoc<Config>
{
};

} // namespace profile_conversion::abandonedobject
