#include <LoiteringOnvifDoc.h>

#include "frame/RuleDocTemplate.h"

namespace profile_conversion::frame
{
using loitering::Config;
using loitering::Rule;

template <>
struct RuleForm<Config> : RuleFormDefaults<Config>
{
    static constexpr RuleItem<Rule> kItems[] = {
        {{"EnableAlarm", &Rule::EnableAlarm, &Rule::EnableAlarm}, 0},
        {{"Severity", &Rule::Severity, &Rule::Severity}, 0},
        {{"DwellTime", &Rule::DwellTime, &Rule::DwellTime}, 5},
        {{"AlarmDelay", &Rule::AlarmDelay, &Rule::AlarmDelay}, 300},
    };
};

template class RuleDoc<Config>;

} // namespace profile_conversion::frame
