#pragma once

#include <frame/StillObject.h>

namespace profile_conversion::stoppedvehicle
{

class Rule : public frame::StillObjectRule
{
};
using Rules = std::vector<Rule*>;

class Config : public frame::StillObjectConfig<Rule>
{
  public:
    static std::string Id() { return "com.varlo.rule.stoppedvehicle"; }
    static std::string Alias() { return frame::AliasOf(Id()); }
};

} // namespace profile_conversion::stoppedvehicle
