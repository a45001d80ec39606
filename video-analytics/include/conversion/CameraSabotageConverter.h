#pragma once

#include <CameraSabotageConfig.h>
#include <frame/BehaviorConverter.h>

#include <string>

namespace profile_conversion
{
namespace camerasabotage
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

} // namespace camerasabotage

class CameraSabotageConverter
    : public frame::BehaviorConverter<camerasabotage::Config, camerasabotage::VarloDoc,
                                      camerasabotage::OnvifDoc>
{
};

} // namespace profile_conversion
