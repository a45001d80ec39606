#pragma once

#include <frame/BehaviorNodes.h>

#include <string>

namespace profile_conversion::frame
{

// Reader and writer of a family's behavior document, the XML of the clients. The family gives its tables
// as BehaviorForm<Config> (frame/BehaviorForm.h) and instantiates this in its own source.
template <class Config>
class BehaviorDoc : public BehaviorNodes
{
  public:
    using Rule = typename Config::RuleType;

    // False if `xml` is not well-formed or has no behavior element of this family; what is missing in
    // the element takes its default. Adds to the rules of `config`.
    bool DocToConfig(const std::string& xml, Config& config);
    // False leaves `xml` alone. So does success for an idle behavior (no rules, not active) in the
    // families that write nothing for one.
    bool ConfigToDoc(const Config& config, std::string& xml);

    std::string BehaviorNodeQry();
    // Null if an argument is. The caller owns the rule.
    Rule* NodeToRule(analytics::DocumentNode* ruleNode, analytics::Document* doc);
    void AddRuleNode(Rule* rule, analytics::DocumentNode* parent); // nothing if an argument is null
};

} // namespace profile_conversion::frame
