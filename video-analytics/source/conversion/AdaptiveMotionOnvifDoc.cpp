#include <AdaptiveMotionConfig.h>

#include "frame/RuleForm.h"

namespace profile_conversion::frame
{
using adaptivemotion::Config;
using adaptivemotion::Rule;

template <>
struct RuleForm<Config> : RuleFormDefaults<Config>
{
    static constexpr bool kLinePossible = true;
    // A missing item is 0 here, whatever the clients' form takes for it. That stands.
    static constexpr RuleItem<Rule> kItems[] = {
        {{"EnableAlarm", &Rule::EnableAlarm, &Rule::EnableAlarm}, 0},
        {{"Direction", &Rule::Direction, &Rule::Direction}, 0},
        {{"Severity", &Rule::Severity, &Rule::Severity}, 0},
        {{"DwellTime", &Rule::DwellTime, &Rule::DwellTime}, 0},
    };
};

template class RuleDoc<Config>;

} // namespace profile_conversion::frame
