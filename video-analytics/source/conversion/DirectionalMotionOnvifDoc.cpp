#include <DirectionalMotionConfig.h>

#include "frame/EnginePart.h"

namespace profile_conversion::frame
{
using directionalmotion::Config;
using directionalmotion::Rule;

template <>
struct RuleForm<Config> : RuleFormDefaults<Config>
{
    static constexpr bool kLinePossible = true;
    static constexpr RuleItem<Rule> kItems[] = {
        {{"EnableAlarm", &Rule::EnableAlarm, &Rule::EnableAlarm}, 0},
        {{"Severity", &Rule::Severity, &Rule::Severity}, 0},
        {{"DwellTime", &Rule::DwellTime, &Rule::DwellTime}, 5},
        {{"AlarmedDirection", &Rule::Direction, &Rule::Direction}, 0},
        {{"ZoneSensitivity", &Rule::Sensitivity, &Rule::Sensitivity}, 5},
    };
};

template <>
struct EnginePart<Config> : CopiedRules<Config>
{
    static constexpr ModuleItem<Config> kItems[] = {
        {{"AdvancedMode", &Config::AdvancedMode, &Config::AdvancedMode}, 0},
        {{"Sensitivity", &Config::Sensitivity, &Config::Sensitivity}, 5},
        {{"ObjectSpeed", &Config::ObjectSpeed, &Config::ObjectSpeed}, 5},
    };
    static constexpr bool kItemsInModule = true;
    static constexpr bool kEnabledOnly = true;
    // The engine alarms on nothing by itself: a severity is not for it.
    static constexpr Field<Rule> kCopied[] = {
        {"EnableAlarm", &Rule::EnableAlarm, &Rule::EnableAlarm},
        {"DwellTime", &Rule::DwellTime, &Rule::DwellTime},
        {"AlarmedDirection", &Rule::Direction, &Rule::Direction},
        {"ZoneSensitivity", &Rule::Sensitivity, &Rule::Sensitivity},
    };
    static void CopyZone(OnvifDoc& writer, analytics::DocumentNode& copy, const Points& zone)
    {
        writer.AddPolygonOrLineNode(&copy, "", zone, true, true);
    }
};

template class RuleDoc<Config>;
template class EngineRuleDoc<Config>;

} // namespace profile_conversion::frame
