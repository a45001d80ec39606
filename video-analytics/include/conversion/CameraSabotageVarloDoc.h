#pragma once

#include <CameraSabotageConfig.h>

#include <string>

namespace profile_conversion::camerasabotage
{

// Reader and writer of the behavior document.
class VarloDoc
{
  public:
    // False if `xml` is not well-formed or has no behavior element of this family. What is missing in
    // the element leaves `config` as it is.
    bool DocToConfig(const std::string& xml, Config& config);
    // Writes an idle behavior too. False leaves `xml` alone.
    bool ConfigToDoc(const Config& config, std::string& xml);

    std::string BehaviorNodeQry() const;
};

} // namespace profile_conversion::camerasabotage
