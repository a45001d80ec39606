#pragma once

#include <frame/RuleDoc.h>

#include "frame/Field.h"
#include "frame/Nodes.h"

#include <analytics/ProfileDoc.h>

#include <array>
#include <memory>
#include <string>

// The tables of engine rules, and what RuleDoc does with them, for the source of a family that instantiates
// it.
namespace profile_conversion::frame
{

// An item of an engine rule and what its reader takes for a missing one, which need not be what the
// rule's constructor sets.
template <class Rule>
struct RuleItem
{
    Field<Rule> field;
    int missing;
};

// The tables of a family's engine rules. A family specialises this, from RuleFormDefaults:
//
//   static constexpr RuleItem<Rule> kItems[]  in written order
//
// and, where it differs, what follows here.
template <class Config>
struct RuleForm;

template <class Config>
struct RuleFormDefaults
{
    using Rule = typename Config::RuleType;

    // A zone of two points is a Line. Where it isn't, it is a Polygon, and no Line is looked for.
    static constexpr bool kLinePossible = false;
};

// The items of a DelayRule, but for the order that some families have.
template <class Rule>
constexpr std::array<RuleItem<Rule>, 4> DelayItems(int missingAlarmDelay)
{
    return {{{{"EnableAlarm", &Rule::EnableAlarm, &Rule::EnableAlarm}, 0},
             {{"Severity", &Rule::Severity, &Rule::Severity}, 0},
             {{"DwellTime", &Rule::DwellTime, &Rule::DwellTime}, 5},
             {{"AlarmDelay", &Rule::AlarmDelay, &Rule::AlarmDelay}, missingAlarmDelay}}};
}

// Parses the plug-in's default configuration into `doc`, removes its default rules and gives the
// container for rules. Null if there is no such configuration or no container in it.
NodePointer ParseDefaultRules(const std::string& ruleId, analytics::ProfileDoc& doc);

// The vertices of a rule's zone, empty if it has none.
Points ReadZone(analytics::ProfileDoc& doc, analytics::DocumentNode& ruleNode, bool linePossible);

template <class Config>
bool RuleDoc<Config>::DocToConfig(const std::string& xml, Config& config)
{
    analytics::ProfileDoc doc;
    if (!doc.ParseString(xml))
        return false;
    ReadRules(doc, config);
    return true;
}

template <class Config>
void RuleDoc<Config>::ReadRules(analytics::ProfileDoc& doc, Config& config)
{
    for (const NodePointer& node : Owned(doc.SelectRules(Config::Id())))
    {
        NodeToObjectSizeFilters(config, node.get(), &doc);
        config.AddRule(RuleFromNode(node.get(), &doc));
    }
    config.Active(doc.RuleIsActive(Config::Id()));
}

template <class Config>
typename RuleDoc<Config>::Rule* RuleDoc<Config>::RuleFromNode(analytics::DocumentNode* ruleNode,
                                                              analytics::ProfileDoc* doc)
{
    if (ruleNode == nullptr || doc == nullptr)
        return nullptr;
    auto rule = std::make_unique<Rule>();
    rule->Name(ruleNode->GetProperty("Name"));
    for (const RuleItem<Rule>& item : RuleForm<Config>::kItems)
        item.field.Set(*rule, doc->GetSimpleItemValue(item.field.Name(), item.missing, ruleNode, true));
    const Points zone = ReadZone(*doc, *ruleNode, RuleForm<Config>::kLinePossible);
    if (!zone.empty())
        rule->Zone(zone);
    return rule.release();
}

template <class Config>
bool RuleDoc<Config>::ConfigToDoc(const Config& config, std::string& xml)
{
    analytics::ProfileDoc doc;
    const NodePointer container = ParseDefaultRules(Config::Id(), doc);
    if (container == nullptr)
        return false;
    for (Rule* rule : config.GetRules())
        AddRuleNode(config, rule, container.get());
    xml = doc.DumpToString();
    return true;
}

template <class Config>
void RuleDoc<Config>::AddRuleNode(Rule* rule, analytics::DocumentNode* parent)
{
    AddRuleNode(Config(), rule, parent);
}

template <class Config>
void RuleDoc<Config>::AddRuleNode(const Config& config, Rule* rule, analytics::DocumentNode* parent)
{
    if (rule == nullptr || parent == nullptr)
        return;
    const NodePointer node(AddRule(parent, rule->Name(), Config::Id()));
    const NodePointer parameters = AddChild(node.get(), "Parameters");
    AddObjectSizeFiltersNode(config, parameters.get());
    for (const RuleItem<Rule>& item : RuleForm<Config>::kItems)
        AddSimpleItemNode(parameters.get(), item.field.Name(), item.field.Get(*rule));
    AddPolygonOrLineNode(parameters.get(), "", rule->Zone(), RuleForm<Config>::kLinePossible, true);
}

} // namespace profile_conversion::frame
