#pragma once

#include <frame/RuleDoc.h>

#include "frame/EngineForm.h"
#include "frame/Nodes.h"
#include "frame/RuleForm.h"

#include <analytics/ProfileDoc.h>

#include <memory>

// The operations of RuleDoc, for the source of a family that instantiates it.
namespace profile_conversion::frame
{

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
    const NodePointer parameters = node == nullptr ? nullptr : AddContainer(*node, "Parameters");
    AddObjectSizeFiltersNode(config, parameters.get());
    for (const RuleItem<Rule>& item : RuleForm<Config>::kItems)
        AddSimpleItemNode(parameters.get(), item.field.Name(), item.field.Get(*rule));
    AddPolygonOrLineNode(parameters.get(), "", rule->Zone(), RuleForm<Config>::kLinePossible, true);
}

} // namespace profile_conversion::frame
