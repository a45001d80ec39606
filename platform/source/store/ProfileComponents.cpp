// The operations of the ProfileManager on the rules and engines of a profile.

#include <analytics/ProfileManager.h>

#include <analytics/Faults.h>

#include "store/ProfileStore.h"
#include "store/StoredText.h"

namespace analytics
{
namespace
{
using platform::NameRefusal;
using platform::PresetRefusal;

constexpr const char* kUnreadableRule = "The behavior document could not be read";
constexpr const char* kUnreadableScene = "The scene document could not be read";

[[noreturn]] void RefuseAfterProfile(const ProfileStore& store, int profileId, const std::string& refusal)
{
    store.Require(profileId);
    throw ClientFault(refusal);
}

bool GetIds(const ProfileStore& store, int profileId, PluginType type, bool onlyActive,
            std::vector<std::string>& ids)
{
    auto found = store.Ids(profileId, type, onlyActive);
    if (!found)
        return false;
    ids = std::move(*found);
    return true;
}

bool GetDocument(const ProfileStore& store, int profileId, PluginType type, const std::string& id,
                 std::string& config)
{
    auto found = store.Document(profileId, type, id);
    if (!found)
        return false;
    config = std::move(*found);
    return true;
}

bool Delete(ProfileStore& store, int profileId, PluginType type, const std::string& word,
            const std::string& id)
{
    if (!store.Remove(profileId, type, id))
        throw ClientFault("Profile " + std::to_string(profileId) + " has no " + word + " " + id);
    return true;
}

} // namespace

bool ProfileManager::GetRules(int profileId, std::vector<std::string>& rules) const
{
    return GetIds(*m_store, profileId, RulePlugin, false, rules);
}

bool ProfileManager::GetActiveRules(int profileId, std::vector<std::string>& rules)
{
    return GetIds(*m_store, profileId, RulePlugin, true, rules);
}

bool ProfileManager::GetRuleConfig(int profileId, const std::string& id, std::string& config) const
{
    return GetDocument(*m_store, profileId, RulePlugin, id, config);
}

bool ProfileManager::SetRuleConfig(int profileId, const std::string& id, const std::string& config,
                                   bool active)
{
    if (config.empty())
        RefuseAfterProfile(*m_store, profileId, kUnreadableRule);
    m_store->Put(profileId, {RulePlugin, id, config, active});
    return true;
}

bool ProfileManager::DeleteRule(int profileId, const std::string& id)
{
    return Delete(*m_store, profileId, RulePlugin, "behavior", id);
}

bool ProfileManager::GetEngines(int profileId, std::vector<std::string>& engines) const
{
    return GetIds(*m_store, profileId, EnginePlugin, false, engines);
}

bool ProfileManager::GetEngineConfig(int profileId, const std::string& id, std::string& config)
{
    return GetDocument(*m_store, profileId, EnginePlugin, id, config);
}

bool ProfileManager::SetEngineConfig(int profileId, const std::string& id, const std::string& config)
{
    if (config.empty())
    {
        m_store->Require(profileId);
        return false;
    }
    m_store->Put(profileId, {EnginePlugin, id, config, false});
    return true;
}

bool ProfileManager::SetEngineConfig(int profileId, const std::string& id, const std::string& config,
                                     const std::string& profileName, const std::string& cameraPreset)
{
    if (config.empty())
        RefuseAfterProfile(*m_store, profileId, kUnreadableScene);
    for (const std::string& refusal : {NameRefusal(profileName), PresetRefusal(cameraPreset)})
        if (!refusal.empty())
            RefuseAfterProfile(*m_store, profileId, refusal);
    m_store->Put(profileId, {EnginePlugin, id, config, false}, profileName, cameraPreset);
    return true;
}

bool ProfileManager::DeleteEngine(int profileId, const std::string& id)
{
    return Delete(*m_store, profileId, EnginePlugin, "engine", id);
}

} // namespace analytics
