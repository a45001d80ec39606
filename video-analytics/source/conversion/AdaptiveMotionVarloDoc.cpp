#include <AdaptiveMotionConfig.h>

#include "frame/BehaviorForm.h"

namespace profile_conversion::frame
{
using adaptivemotion::Config;
using adaptivemotion::Rule;

template <>
struct BehaviorForm<Config> : BehaviorFormDefaults<Config>
{
    static constexpr char kVarloDocTemplate[] =
        R"(<?xml version="1.0" encoding="utf-8"?>)"
        R"(<behavior version="2.0" id="urn:varlo-com:AlgorithmId:AdaptiveMotion:1" active="0" advanceMode="0">)"
        R"(<minPoints>2</minPoints><maxPoints>6</maxPoints>)"
        R"(<objectSizeFilters reqd="1"><filter>minObj</filter><filter>maxObj</filter></objectSizeFilters>)"
        R"(<rois/><excludeZones/></behavior>)";
    static constexpr RoiChild<Rule> kRoiChildren[] = {
        {{"enable", &Rule::EnableAlarm, &Rule::EnableAlarm}},
        {{"direction", &Rule::Direction, &Rule::Direction}},
        {{"alarmSeverity", &Rule::Severity, &Rule::Severity}},
        {{"dwellTime", &Rule::DwellTime, &Rule::DwellTime}, Bounds{5, 1000}},
    };
};

template class BehaviorDoc<Config>;

} // namespace profile_conversion::frame
