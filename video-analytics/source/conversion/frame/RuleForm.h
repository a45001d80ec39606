#pragma once

#include "frame/Field.h"

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

} // namespace profile_conversion::frame
