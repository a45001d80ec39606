#include <ObjectCountingConfig.h>

#include "frame/BehaviorForm.h"
#include "frame/ObjectSizes.h"

namespace profile_conversion::frame
{
using objectcounting::Config;
using objectcounting::Rule;

template <>
struct BehaviorForm<Config> : BehaviorFormDefaults<Config>
{
    static constexpr char kVarloDocTemplate[] =
        R"(<?xml version="1.0" encoding="utf-8"?>)"
        R"(<behavior version="2.0" id="urn:varlo-com:AlgorithmId:ObjectCounting:1" active="0" advanceMode="0">)"
        R"(<minPoints>2</minPoints><maxPoints>6</maxPoints>)"
        R"(<objectSizeFilters reqd="1"><filter>minObj</filter><filter>maxObj</filter>)"
        R"(<filter>avgObj</filter></objectSizeFilters>)"
        R"(<filters><objectsizes><objectsize><name>avgObj</name><resize>3</resize><moveable>3</moveable>)"
        R"(<vertices></vertices></objectsize></objectsizes></filters><rois/><excludeZones/></behavior>)";
    static constexpr RoiChild<Rule> kRoiChildren[] = {
        {{"enable", &Rule::EnableAlarm, &Rule::EnableAlarm}},
        {{"direction", &Rule::Direction, &Rule::Direction}},
        {{"alarmSeverity", &Rule::Severity, &Rule::Severity}},
        {{"dwellTime", &Rule::DwellTime, &Rule::DwellTime}, Bounds{5, 1000}},
        {{"alarmCount", &Rule::AlarmOnCount, &Rule::AlarmOnCount}},
        {{"countReset", &Rule::ResetCounterOnAlarm, &Rule::ResetCounterOnAlarm}},
    };

    // A document without the size sets it to (0, 0) twice, whatever the model had.
    static void ReadHead(Config& config, analytics::DocumentNode& behavior, analytics::Document& doc)
    {
        Line size;
        ReadObjectSize(size, "avgObj", behavior, doc);
        config.AvgObjectSize(size);
    }
    static void WriteHead(const Config& config, analytics::DocumentNode& behavior, analytics::Document& doc)
    {
        WriteObjectSize(config.AvgObjectSize(), "avgObj", behavior, doc);
    }
};

template class BehaviorDoc<Config>;

} // namespace profile_conversion::frame
