#pragma once

#include <frame/BehaviorConfig.h>

namespace profile_conversion::objectremoval
{

// A zone out of which nothing may be taken.
class Rule : public frame::DelayRule<3>
{
};
using Rules = std::vector<Rule*>;

class Config : public frame::EngineBehaviorConfig<Rule>
{
  public:
    static std::string Id() { return "com.varlo.rule.objectremoval"; }
    static std::string Alias() { return frame::AliasOf(Id()); }
};

} // namespace profile_conversion::objectremoval
