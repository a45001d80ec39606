#pragma once

#include <frame/StillObject.h>

namespace profile_conversion::abandonedobject
{

// A zone in which something that stays is alarmed on.
class Rule : public frame::DelayRule<3>
{
};
using Rules = std::vector<Rule*>;

class Config : public frame::StillObjectConfig<Rule>
{
  public:
    static std::string Id() { return "com.varlo.rule.abandonedobject"; }
    static std::string Alias() { return frame::AliasOf(Id()); }
};

} // namespace profile_conversion::abandonedobject
