#include <LoiteringConfig.h>

#include "frame/BehaviorForm.h"

namespace profile_conversion::frame
{
using loitering::Config;
using loitering::Rule;

template <>
struct BehaviorForm<Config> : BehaviorFormDefaults<Config>
{
    // What stands outside of `active` and `rois` tells clients what they may offer; it is never read.
    static constexpr char kVarloDocTemplate[] =
        R"(<?xml version="1.0" encoding="utf-8"?>)"
        R"(<behavior version="2.0" id="urn:varlo-com:AlgorithmId:LoiteringDetection:1" active="0" advanceMode="0">)"
        R"(<minPoints>3</minPoints><maxPoints>6</maxPoints>)"
        R"(<objectSizeFilters reqd="1"><filter>minObj</filter><filter>maxObj</filter></objectSizeFilters>)"
        R"(<rois/><excludeZones/></behavior>)";
    static constexpr bool kEmptyWhenIdle = false;
    static constexpr auto kRoiChildren = DelayRoi<Rule>(Bounds{5, 1000}, Bounds{30, 1800});
};

template class BehaviorDoc<Config>;

} // namespace profile_conversion::frame
