#pragma once

#include <frame/BehaviorConfig.h>

namespace profile_conversion::adaptivemotion
{

// A zone or, with two points, a line in which nothing may move.
class Rule : public frame::AnyDirectionRule
{
};
using Rules = std::vector<Rule*>;

class Config : public frame::BehaviorConfig<Rule>
{
  public:
    static std::string Id() { return "com.varlo.rule.adaptivemotion"; }
    static std::string Alias() { return frame::AliasOf(Id()); }
};

} // namespace profile_conversion::adaptivemotion
