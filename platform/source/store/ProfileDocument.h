#pragma once

#include <analytics/PluginManager.h>

#include <string>
#include <vector>

namespace analytics
{

// A rule or engine as a profile holds it.
struct StoredConfiguration
{
    PluginType kind = RulePlugin; // or EnginePlugin
    std::string id;
    std::string document; // engine document; what counts are the rules in it of type `id`, or the engine `id`
    bool active = false;  // of rules
};

// The engine document of a whole profile, for ProfileDoc to read: the rules of each stored rule
// document in the order given, a mark for each active one, and the engine modules, from an engine's own
// configuration where one is stored and otherwise from the first rule document that has the module.
// Empty if nothing is stored. A configuration that isn't XML is passed over: it is a behavior that was
// stored unconverted, and the others must stay readable.
std::string MergeProfile(const std::vector<StoredConfiguration>& configurations);

} // namespace analytics
