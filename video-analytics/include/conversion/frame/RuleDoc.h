#pragma once

#include <OnvifDoc.h>

#include <string>

namespace analytics
{
class ProfileDoc;
}

namespace profile_conversion::frame
{

// Reader and writer of a family's rules in the engine document. The family gives its tables as
// RuleForm<Config> (frame/RuleForm.h) and instantiates this in its own source.
template <class Config>
class RuleDoc : public OnvifDoc
{
  public:
    using Rule = typename Config::RuleType;

    // False if `xml` is not well-formed. A document without such rules is a success. Adds to the rules
    // of `config`.
    bool DocToConfig(const std::string& xml, Config& config);
    // The plug-in's default configuration with the rules of `config` in the place of its own. False
    // leaves `xml` alone: there is no such configuration, or no container for rules in it.
    bool ConfigToDoc(const Config& config, std::string& xml);

    void AddRuleNode(Rule* rule, analytics::DocumentNode* parent); // nothing if an argument is null
    // Null if an argument is. The caller owns the rule.
    Rule* RuleFromNode(analytics::DocumentNode* ruleNode, analytics::ProfileDoc* doc);

  protected:
    void ReadRules(analytics::ProfileDoc& doc, Config& config); // and whether they are active
    // The rule with the object sizes of `config`, in a family that has them in its rules.
    void AddRuleNode(const Config& config, Rule* rule, analytics::DocumentNode* parent);
    // In the rule's Parameters, ahead of its items. These do nothing if a node or document is null.
    virtual void AddObjectSizeFiltersNode(const Config&, analytics::DocumentNode* /*parent*/) {}
    // Takes those of a rule; one that has none leaves the model alone.
    virtual void NodeToObjectSizeFilters(Config&, analytics::DocumentNode* /*node*/, analytics::ProfileDoc*)
    {
    }
};

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
