#pragma once

#include <frame/BehaviorDoc.h>

#include "frame/Field.h"
#include "frame/Nodes.h"

#include <array>
#include <memory>
#include <optional>
#include <span>

// The tables of a behavior document, and what BehaviorDoc does with them, for the source of a family that
// instantiates it.
namespace profile_conversion::frame
{

// Advice to clients on a number. Nothing compares the number with it.
struct Bounds
{
    int min;
    int max;
};

// A child of a roi, between its name and its vertices. A missing one leaves what the rule's constructor
// has set. A row of two numbers is a constant, which is written and never read.
template <class Rule>
struct RoiChild
{
    constexpr RoiChild(const Field<Rule>& ruleField, std::optional<Bounds> advice = std::nullopt)
        : name(ruleField.Name()), field(ruleField), bounds(advice)
    {
    }
    constexpr RoiChild(const char* childName, int value) : name(childName), constant(value) {}

    const char* name;
    std::optional<Field<Rule>> field;
    std::optional<Bounds> bounds;
    int constant = 0;
};

// The tables of a family's behavior document. A family specialises this, from BehaviorFormDefaults:
//
//   static constexpr char kVarloDocTemplate[]      the document without rules
//   static constexpr RoiChild<Rule> kRoiChildren[] in written order
//
// and, where it differs, what follows here.
template <class Config>
struct BehaviorForm;

template <class Config>
struct BehaviorFormDefaults
{
    using Rule = typename Config::RuleType;

    // An idle behavior (no rules, not active) is written as nothing at all.
    static constexpr bool kEmptyWhenIdle = true;
    // Fields of the model in attributes and in child elements of the behavior. A missing attribute reads
    // as 0, a missing element leaves what the constructor has set.
    static constexpr std::span<const Field<Config>> kAttributes{};
    static constexpr std::span<const Field<Config>> kElements{};
    // Whatever else stands above the rules.
    static void ReadHead(Config&, analytics::DocumentNode&, analytics::Document&) {}
    static void WriteHead(const Config&, analytics::DocumentNode&, analytics::Document&) {}
};

// The same for a behavior with settings of its engine.
template <class Config>
struct EngineBehaviorFormDefaults : BehaviorFormDefaults<Config>
{
    static constexpr Field<Config> kAttributes[] = {
        {"advanceMode", &Config::AdvancedMode, &Config::AdvancedMode},
    };
    static constexpr Field<Config> kElements[] = {
        {"sensitivity", &Config::Sensitivity, &Config::Sensitivity},
    };
};

// The children of a roi whose rule is a DelayRule.
template <class Rule>
constexpr std::array<RoiChild<Rule>, 4> DelayRoi(Bounds dwellTime, Bounds alarmDelay)
{
    return {{{{"enable", &Rule::EnableAlarm, &Rule::EnableAlarm}},
             {{"alarmSeverity", &Rule::Severity, &Rule::Severity}},
             {{"dwellTime", &Rule::DwellTime, &Rule::DwellTime}, dwellTime},
             {{"alarmDelay", &Rule::AlarmDelay, &Rule::AlarmDelay}, alarmDelay}}};
}

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
    const NodePointer behavior = ParseAndSelect(doc, Form::kVarloDocTemplate, BehaviorNodeQry());
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
    const NodePointer roi = rule == nullptr ? nullptr : AddChild(parent, "roi");
    if (roi == nullptr)
        return;
    AddChild(roi.get(), "name", rule->Name());
    for (const RoiChild<Rule>& child : BehaviorForm<Config>::kRoiChildren)
    {
        const int value = child.field ? child.field->Get(*rule) : child.constant;
        const NodePointer node = AddChild(roi.get(), child.name, value);
        if (node == nullptr || !child.bounds)
            continue;
        node->SetProperty("min", child.bounds->min);
        node->SetProperty("max", child.bounds->max);
    }
    if (!rule->Zone().empty())
        AddPointsNodes(rule->Zone(), AddChild(roi.get(), "vertices").get());
}

} // namespace profile_conversion::frame
