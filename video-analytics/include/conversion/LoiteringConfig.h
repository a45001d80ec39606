#pragma once

#include <frame/BehaviorConfig.h>

namespace profile_conversion::loitering
{

// A zone in which no object may stay longer than the dwell time.
class Rule : public frame::DelayRule<300>
{
};
using Rules = std::vector<Rule*>;

class Config : public frame::BehaviorConfig<Rule>
{
  public:
    static std::string Id() { return "com.varlo.rule.loiteringdetection"; }
    static std::string Alias() { return frame::AliasOf(Id()); }
};

} // namespace profile_conversion::loitering
