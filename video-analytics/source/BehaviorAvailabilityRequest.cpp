#include <AvailabilityRequests.h>

#include <analytics/PluginManager.h>
#include <analytics/ProfileManager.h>
#include <analytics/Settings.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace analyticsapi
{
namespace
{

using analytics::Manifest;
using analytics::ManifestArray;
using std::string;
using Strings = std::vector<string>;
// All counters are 32 bits wide, as on the camera: a subtraction below zero wraps.
using Count = std::uint32_t;

constexpr int kDefaultMaxSelectCount = 2;

struct FindManifest
{
    const Manifest& m_manifest;

    bool operator()(const string& id) const { return id == m_manifest.Id() || id == m_manifest.Alias(); }
    // Aliases play no part here: engines are told apart by their identifiers.
    bool operator()(const Manifest& manifest) const { return manifest.Id() == m_manifest.Id(); }
};

struct FindManifestId
{
    const string& m_id;

    bool operator()(const Manifest& manifest) const
    {
        return m_id == manifest.Id() || m_id == manifest.Alias();
    }
};

template <class Range, class Predicate>
bool Any(const Range& range, const Predicate& predicate)
{
    return std::any_of(range.begin(), range.end(), predicate);
}

bool Contains(const Strings& strings, const string& text)
{
    return std::find(strings.begin(), strings.end(), text) != strings.end();
}

// Not valid, and so without any cost, if there is no such plug-in.
Manifest ManifestOf(const analytics::PluginManager& pm, const string& id)
{
    Manifest manifest;
    pm.GetManifest(manifest, id);
    return manifest;
}

// Every plug-in that one of `rules` needs, once each, in the order of first mention. One level deep.
// Nothing tests that a dependency is an engine.
ManifestArray GetEnginesForRules(const Strings& rules)
{
    ManifestArray engines;
    const analytics::PluginManager pm;
    for (const string& rule : rules)
        for (const string& dep : ManifestOf(pm, rule).Dependencies())
        {
            const Manifest engineManifest = ManifestOf(pm, dep);
            if (engineManifest.Valid() && !Any(engines, FindManifest{engineManifest}))
                engines.push_back(engineManifest);
        }
    return engines;
}

Availability CheckBehaviorAvailability(const Strings& activeRules, ManifestArray::const_iterator it,
                                       const ManifestArray& activeEngines, const analytics::PluginManager& pm,
                                       Count resAvailable, Count numSelectRules, Count maxSelectCount,
                                       bool& activeBehaviorsMoveCamera)
{
    if (Any(activeRules, FindManifest{*it}))
    {
        if (!it->FixedCameraPosition())
            activeBehaviorsMoveCamera = true;
        return Active; // whatever the limits say
    }
    Count ruleReq = it->ResourceRequirement();
    for (const string& dep : it->Dependencies())
        if (!Any(activeEngines, FindManifestId{dep})) // an engine that runs already costs nothing more
            ruleReq += ManifestOf(pm, dep).ResourceRequirement();
    return ruleReq <= resAvailable && numSelectRules < maxSelectCount ? Available : Unavailable;
}

// What the active rules and their engines use of the budget, and of the selections.
struct Usage
{
    Count activeReq;
    Count numSelectRules;
};

Usage Measure(const Strings& activeRules, const ManifestArray& activeEngines,
              const Strings& nonUserConfigurables, const analytics::PluginManager& pm)
{
    Count activeReq = 0;
    for (const Manifest& engine : activeEngines)
        activeReq += engine.ResourceRequirement();
    Count numSelectRules = 0;
    for (const string& rule : activeRules)
    {
        const Manifest manifest = ManifestOf(pm, rule);
        activeReq += manifest.ResourceRequirement();
        if (!Contains(nonUserConfigurables, manifest.Id()))
            ++numSelectRules;
    }
    return {activeReq, numSelectRules};
}

} // namespace

const AvailabilityList& BehaviorAvailabilityRequest::BehaviorAvailabilities(AvailabilityList& hidden) const
{
    hidden = m_hiddenAvailabilities;
    return m_availabilities;
}

int BehaviorAvailabilityRequest::GetAvailabilities(const Strings& activeRules)
{
    const analytics::PluginManager pm;
    auto maxSelectCount = static_cast<Count>(
        analytics::Settings::GetValue("//maxSelectableRules/numberOfCount", kDefaultMaxSelectCount));
    const bool countOnlyConfigurable =
        analytics::Settings::GetValue("//maxSelectableRules/countOnlyConfigurable", 0) != 0;
    const ManifestArray activeEngines = GetEnginesForRules(activeRules);
    const Strings nonUserConfigurables = analytics::Settings::GetValues("//nonUserConfigurableRules/id");
    const Usage used = Measure(activeRules, activeEngines, nonUserConfigurables, pm);
    // The MD function takes the place of one behavior. No guard: from 0 the count wraps, and then limits
    // nothing any more.
    if (!countOnlyConfigurable && GetProfileManager()->GetMDActiveState())
        --maxSelectCount;
    const Count maxResource = analytics::Settings::MaxResource();
    const Count resAvailable = maxResource >= used.activeReq ? maxResource - used.activeReq : 0;

    bool activeBehaviorsMoveCamera = false;
    ManifestArray manifests;
    pm.GetRulesManifests(manifests);
    m_availabilities.reserve(manifests.size());
    for (auto it = manifests.begin(); it != manifests.end(); ++it)
    {
        const Availability availability =
            CheckBehaviorAvailability(activeRules, it, activeEngines, pm, resAvailable, used.numSelectRules,
                                      maxSelectCount, activeBehaviorsMoveCamera);
        const bool hidden = Contains(nonUserConfigurables, it->Id());
        (hidden ? m_hiddenAvailabilities : m_availabilities).emplace_back(std::move(*it), availability);
    }
    // Hidden behaviors aren't filtered, and with no active rules nothing is.
    if (!activeRules.empty())
        RemoveFixedNoFixedBehaviors(m_availabilities, activeBehaviorsMoveCamera);
    return 0;
}

void BehaviorAvailabilityRequest::RemoveFixedNoFixedBehaviors(AvailabilityList& availabilities,
                                                              bool activeBehaviorsMoveCamera)
{
    // The kind that the camera can't run beside the active ones goes, active or not: with both kinds
    // active, the active ones that need a still camera are reported as unavailable. That is wanted.
    for (auto& [manifest, availability] : availabilities)
        if (manifest.FixedCameraPosition() == activeBehaviorsMoveCamera)
            availability = Unavailable;
}

} // namespace analyticsapi
