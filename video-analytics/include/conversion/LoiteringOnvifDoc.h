#pragma once

#include <LoiteringConfig.h>
#include <frame/RuleDoc.h>

namespace profile_conversion::loitering
{

class OnvifDoc : public frame::RuleDoc<Config>
{
};

} // namespace profile_conversion::loitering
