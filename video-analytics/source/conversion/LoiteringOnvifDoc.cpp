#include <LoiteringConfig.h>

#include "frame/RuleForm.h"

namespace profile_conversion::frame
{
using loitering::Config;
using loitering::Rule;

template <>
struct RuleForm<Config> : RuleFormDefaults<Config>
{
    static constexpr auto kItems = DelayItems<Rule>(300);
};

template class RuleDoc<Config>;

} // namespace profile_conversion::frame
