#include <ObjectRemovalVarloDoc.h>

#include "frame/BehaviorDocTemplate.h"

namespace profile_conversion::frame
{
using objectremoval::Config;
using objectremoval::Rule;

template <>
struct BehaviorForm<Config> : BehaviorFormDefaults<Config>
{
    static constexpr char kTemplate[] =
        R"(<?xml version="1.0" encoding="utf-8"?>)"
        R"(<behavior version="2.0" id="urn:varlo-com:AlgorithmId:ObjectRemoval:1" active="0" advanceMode="0">)"
        R"(<minPoints>3</minPoints><maxPoints>6</maxPoints><sensitivity>5</sensitivity><rois/></behavior>)";
    static constexpr Field<Config> kAttributes[] = {
        {"advanceMode", &Config::AdvancedMode, &Config::AdvancedMode},
    };
    static constexpr Field<Config> kElements[] = {
        {"sensitivity", &Config::Sensitivity, &Config::Sensitivity},
    };
    static constexpr RoiChild<Rule> kRoiChildren[] = {
        {{"enable", &Rule::EnableAlarm, &Rule::EnableAlarm}},
        {{"alarmSeverity", &Rule::Severity, &Rule::Severity}},
        {{"dwellTime", &Rule::DwellTime, &Rule::DwellTime}, Bounds{3, 1000}},
        {{"alarmDelay", &Rule::AlarmDelay, &Rule::AlarmDelay}, Bounds{3, 300}},
    };
};

template class BehaviorDoc<Config>;

} // namespace profile_conversion::frame
