#pragma once

#include "frame/Field.h"

#include <optional>
#include <span>

namespace analytics
{
class Document;
class DocumentNode;
} // namespace analytics

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
//   static constexpr char kTemplate[]              the document without rules
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

} // namespace profile_conversion::frame
