#include <DirectionalMotionConfig.h>

#include "frame/BehaviorForm.h"

namespace profile_conversion::frame
{
using directionalmotion::Config;
using directionalmotion::Rule;

template <>
struct BehaviorForm<Config> : EngineBehaviorFormDefaults<Config>
{
    static constexpr char kVarloDocTemplate[] =
        R"(<?xml version="1.0" encoding="utf-8"?>)"
        R"(<behavior version="2.0" id="urn:varlo-com:AlgorithmId:DirectionalMotion:1" active="0" advanceMode="0">)"
        R"(<minPoints>2</minPoints><maxPoints>6</maxPoints>)"
        R"(<objectSpeed>5</objectSpeed><sensitivity>5</sensitivity><rois/></behavior>)";
    static constexpr Field<Config> kElements[] = {
        {"sensitivity", &Config::Sensitivity, &Config::Sensitivity},
        {"objectSpeed", &Config::ObjectSpeed, &Config::ObjectSpeed},
    };
    static constexpr RoiChild<Rule> kRoiChildren[] = {
        {{"enable", &Rule::EnableAlarm, &Rule::EnableAlarm}},
        {{"alarmSeverity", &Rule::Severity, &Rule::Severity}},
        {{"dwellTime", &Rule::DwellTime, &Rule::DwellTime}, Bounds{3, 3000}},
        {"include", 1}, // every zone is an included one, whatever a client says
        {{"zoneSensitivity", &Rule::Sensitivity, &Rule::Sensitivity}},
        {{"direction", &Rule::Direction, &Rule::Direction}},
    };
};

template class BehaviorDoc<Config>;

} // namespace profile_conversion::frame
