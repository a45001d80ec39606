#pragma once

#include <frame/RuleDoc.h>

#include <string>

namespace profile_conversion::frame
{

// A RuleDoc whose behavior has settings in the module of its analytics engine too. The family gives
// their tables as EnginePart<Config> (frame/EnginePart.h) beside its RuleForm<Config>.
template <class Config>
class EngineRuleDoc : public RuleDoc<Config>
{
  public:
    // The settings from the engine's module in `xml`, if it has one; the rules never from there.
    bool DocToConfig(const std::string& xml, Config& config);
    // Makes the engine configuration as well, also when the rule document can't be made.
    bool ConfigToDoc(const Config& config, std::string& xml);
    // What the last ConfigToDoc() has made: both empty before it, either empty if there is none.
    void EngineConfig(std::string& id, std::string& config);

    // The engine that the rule's plug-in depends on; empty if it depends on none.
    std::string EngineId(const std::string& id);
    // The engine's default configuration with the settings of `config`; empty if there is none that
    // could take them.
    std::string ConfigToEngineDoc(const std::string& engineId, const Config& config);

  private:
    std::string m_engineId;
    std::string m_engineConfig;
};

} // namespace profile_conversion::frame
