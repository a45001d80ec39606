// The operations of the ProfileManager that ask the installed plug-ins.

#include <analytics/ProfileManager.h>

#include <analytics/Faults.h>
#include <analytics/PluginManager.h>
#include <analytics/Settings.h>

#include "store/ProfileStore.h"

#include <set>

namespace analytics
{
namespace
{
struct Kind
{
    PluginType type;
    const char* typeName;
    const char* word; // towards clients
};
constexpr Kind kRule = {RulePlugin, "rule", "behavior"};
constexpr Kind kEngine = {EnginePlugin, "engine", "engine"};

Manifest ManifestOf(const std::string& id)
{
    Manifest manifest;
    PluginManager().GetManifest(manifest, id);
    return manifest;
}

// Adds the plug-in to the profile with its default configuration, not active.
bool Add(ProfileStore& store, int profileId, const Kind& kind, const std::string& id)
{
    store.Require(profileId);
    const Manifest manifest = ManifestOf(id);
    if (manifest.Type() != kind.typeName)
        throw ClientFault("There is no " + std::string(kind.word) + " " + id + " on this camera");
    const std::string config = PluginManager().GetDefaultConfiguration(id);
    if (config.empty())
        throw AnalyticsFault("The plug-in " + id + " brings no default configuration; set one instead");
    if (!store.Add(profileId, {kind.type, manifest.Id(), config, false}))
        throw ClientFault("Profile " + std::to_string(profileId) + " has the " + kind.word + " " + id +
                          " already");
    return true;
}

// The costs of plug-ins, each counted once.
class Bill
{
  public:
    void Add(const Manifest& manifest)
    {
        if (m_counted.insert(manifest.Id()).second)
            m_sum += manifest.ResourceRequirement();
    }
    void AddRule(const std::string& id)
    {
        const Manifest manifest = ManifestOf(id);
        Add(manifest);
        for (const std::string& dependency : manifest.Dependencies())
            Add(ManifestOf(dependency));
    }
    std::uint64_t Sum() const { return m_sum; }

  private:
    std::set<std::string> m_counted;
    std::uint64_t m_sum = 0;
};
} // namespace

bool ProfileManager::AddRule(int profileId, const std::string& id)
{
    return Add(*m_store, profileId, kRule, id);
}
bool ProfileManager::AddEngine(int profileId, const std::string& id)
{
    return Add(*m_store, profileId, kEngine, id);
}

bool ProfileManager::HasEnoughResource(int profileId, const std::string& id)
{
    m_store->Require(profileId);
    if (ManifestOf(id).Type() != kRule.typeName)
        throw ClientFault("There is no behavior " + id + " on this camera");
    std::vector<std::string> rules;
    GetActiveRules(profileId, rules);
    rules.push_back(id);
    Bill bill;
    for (const std::string& rule : rules)
        bill.AddRule(rule);
    return bill.Sum() <= Settings::MaxResource();
}

} // namespace analytics
