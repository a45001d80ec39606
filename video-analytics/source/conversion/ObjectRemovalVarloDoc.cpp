#include <ObjectRemovalConfig.h>

#include "frame/BehaviorForm.h"

namespace profile_conversion::frame
{
using objectremoval::Config;
using objectremoval::Rule;

template <>
struct BehaviorForm<Config> : EngineBehaviorFormDefaults<Config>
{
    static constexpr char kVarloDocTemplate[] =
        R"(<?xml version="1.0" encoding="utf-8"?>)"
        R"(<behavior version="2.0" id="urn:varlo-com:AlgorithmId:ObjectRemoval:1" active="0" advanceMode="0">)"
        R"(<minPoints>3</minPoints><maxPoints>6</maxPoints><sensitivity>5</sensitivity><rois/></behavior>)";
    static constexpr auto kRoiChildren = DelayRoi<Rule>(Bounds{3, 1000}, Bounds{3, 300});
};

template class BehaviorDoc<Config>;

} // namespace profile_conversion::frame
