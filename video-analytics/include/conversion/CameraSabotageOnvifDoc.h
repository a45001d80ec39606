#pragma once

#include <CameraSabotageConfig.h>

#include <string>

namespace profile_conversion::camerasabotage
{

// Reader and writer of the one rule in the engine document.
class OnvifDoc
{
  public:
    // False if `xml` is not well-formed or, unlike in the other families, has no such rule.
    bool DocToConfig(const std::string& xml, Config& config);
    // The plug-in's default configuration with the values of `config` in its own rule; nothing is added,
    // also where the rule or an item of it is missing. False leaves `xml` alone: there is no such
    // configuration.
    bool ConfigToDoc(const Config& config, std::string& xml);
};

} // namespace profile_conversion::camerasabotage
