#pragma once

#include <frame/StillObjectConfig.h>

namespace profile_conversion::abandonedobject
{

using Rule = frame::StillObjectRule;
using Rules = std::vector<Rule*>;

class Config : public frame::StillObjectConfig
{
  public:
    static std::string Id() { return "com.varlo.rule.abandonedobject"; }
    static std::string Alias() { return frame::AliasOf(Id()); }
};

} // namespace profile_conversion::abandonedobject
