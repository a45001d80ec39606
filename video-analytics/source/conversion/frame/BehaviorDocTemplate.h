#pragma once

#include <frame/BehaviorDoc.h>

#include "frame/BehaviorForm.h"
#include "frame/Nodes.h"

#include <memory>

// The operations of BehaviorDoc, for the source of a family that instantiates it.
namespace profile_conversion::frame
{

template <class Config>
std::string BehaviorDoc<Config>::BehaviorNodeQry()
{
    return QueryFor(Config::Id(), Config::Alias());
}

template <class Config>
bool BehaviorDoc<Config>::DocToConfig(const std::string& xml, Config& config)
{
    using Form = BehaviorForm<Config>;
    analytics::Document doc;
    const NodePointer behavior = ParseAndSelect(doc, xml, BehaviorNodeQry());
    if (behavior == nullptr)
        return false;
    config.Active(behavior->GetProperty("active", 0) != 0);
    for (const Field<Config>& field : Form::kAttributes)
        field.Set(config, behavior->GetProperty(field.Name(), 0));
    for (const Field<Config>& field : Form::kElements)
        field.Set(config, doc.GetSingleValue(field.Name(), field.Get(config), behavior.get()));
    Form::ReadHead(config, *behavior, doc);
    for (const NodePointer& roi : SelectNodes(doc, ".//rois/roi", behavior.get()))
        config.AddRule(NodeToRule(roi.get(), &doc));
    return true;
}

template <class Config>
typename BehaviorDoc<Config>::Rule* BehaviorDoc<Config>::NodeToRule(analytics::DocumentNode* ruleNode,
                                                                    analytics::Document* doc)
{
    if (ruleNode == nullptr || doc == nullptr)
        return nullptr;
    auto rule = std::make_unique<Rule>();
    rule->Name(doc->GetSingleValue("./name", ruleNode));
    for (const RoiChild<Rule>& child : BehaviorForm<Config>::kRoiChildren)
        if (child.field)
            child.field->Set(*rule, doc->GetSingleValue(std::string("./") + child.name,
                                                        child.field->Get(*rule), ruleNode));
    const Points zone = ReadPoints("./vertices/vertex", ruleNode, *doc);
    if (!zone.empty())
        rule->Zone(zone);
    return rule.release();
}

template <class Config>
bool BehaviorDoc<Config>::ConfigToDoc(const Config& config, std::string& xml)
{
    using Form = BehaviorForm<Config>;
    if (Form::kEmptyWhenIdle && config.GetRules().empty() && !config.Active())
        return true;
    analytics::Document doc;
    const NodePointer behavior = ParseAndSelect(doc, Form::kTemplate, BehaviorNodeQry());
    if (behavior == nullptr)
        return false;
    behavior->SetProperty("active", config.Active() ? 1 : 0);
    for (const Field<Config>& field : Form::kAttributes)
        behavior->SetProperty(field.Name(), field.Get(config));
    for (const Field<Config>& field : Form::kElements)
        if (const NodePointer element = SelectNode(doc, field.Name(), behavior.get()))
            element->SetValue(field.Get(config));
    Form::WriteHead(config, *behavior, doc);
    const NodePointer rois = SelectNode(doc, ".//rois", behavior.get());
    for (Rule* rule : config.GetRules())
        AddRuleNode(rule, rois.get());
    xml = doc.DumpToString();
    return true;
}

template <class Config>
void BehaviorDoc<Config>::AddRuleNode(Rule* rule, analytics::DocumentNode* parent)
{
    const NodePointer roi = rule == nullptr || parent == nullptr ? nullptr : AddContainer(*parent, "roi");
    if (roi == nullptr)
        return;
    NodePointer(roi->AddNewChild("name", rule->Name()));
    for (const RoiChild<Rule>& child : BehaviorForm<Config>::kRoiChildren)
    {
        const int value = child.field ? child.field->Get(*rule) : child.constant;
        const NodePointer node(roi->AddNewChild(child.name, value));
        if (node == nullptr || !child.bounds)
            continue;
        node->SetProperty("min", child.bounds->min);
        node->SetProperty("max", child.bounds->max);
    }
    if (!rule->Zone().empty())
        AddPointsNodes(rule->Zone(), AddContainer(*roi, "vertices").get());
}

} // namespace profile_conversion::frame
