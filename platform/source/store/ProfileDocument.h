#pragma once

#include <string>
#include <vector>

namespace analytics
{

struct StoredRule
{
    std::string id;
    std::string config; // engine document; the rules in it of type `id` are the stored ones
    bool active;
};

struct StoredEngine
{
    std::string id;
    std::string config; // engine document with the module of `id`
};

// The engine document of a whole profile, for ProfileDoc to read: the rules of each stored rule
// document in the order given, a mark for each active one, and the engine modules, from an engine's own
// configuration where one is stored and otherwise from the first rule document that has the module.
// Empty if nothing is stored. A configuration that is no XML is passed over: it is a behavior that was
// stored unconverted, and the others must stay readable.
std::string MergeProfile(const std::vector<StoredRule>& rules, const std::vector<StoredEngine>& engines);

} // namespace analytics
