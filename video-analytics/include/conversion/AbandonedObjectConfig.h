#pragma once

#include <frame/StillObject.h>

namespace profile_conversion::abandonedobject
{

class Rule : public frame::StillObjectRule
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
