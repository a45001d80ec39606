#pragma once

#include <Shapes.h>

#include <string>

namespace analytics
{
class Document;
class DocumentNode;
} // namespace analytics

namespace profile_conversion::frame
{

// What the readers and writers of all behavior documents have in common. Nodes and documents stay the
// caller's; an operation without its node does nothing.
class BehaviorNodes
{
  public:
    // A coordinate that is missing leaves the one of `vertex`.
    void NodeToPoint(Point& vertex, analytics::DocumentNode* node, analytics::Document* doc);
    // One `vertex` element for each point.
    void AddPointsNodes(const Points& points, analytics::DocumentNode* parent);
    void AddPointNodes(const Point& point, analytics::DocumentNode* parent);
    // The points of the nodes that `query` selects from `context`, each (0, 0) where it says nothing.
    Points ReadPoints(const std::string& query, analytics::DocumentNode* context, analytics::Document& doc);
    // The path to the behavior element, which may bear either identifier.
    static std::string QueryFor(const std::string& id, const std::string& alias);
};

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
