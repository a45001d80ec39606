#include <analytics/ProfileManager.h>

#include <analytics/Faults.h>
#include <analytics/PluginManager.h>
#include <analytics/Settings.h>

#include "audit/AuditTrail.h"
#include "files/StandardError.h"
#include "metrics/Metrics.h"
#include "request/Request.h"
#include "settings/Configuration.h"
#include "store/ProfileStore.h"
#include "store/SizeLimits.h"
#include "xml/Text.h"

#include <iterator>
#include <optional>
#include <utility>

namespace analytics
{
namespace
{
using platform::AuditEntry;
using platform::Role;

constexpr std::size_t kTextBytes = 255;

struct Kind
{
    PluginType type;
    const char* typeName;
    const char* word; // towards clients
};
constexpr Kind kRuleKind = {RulePlugin, "rule", "behavior"};
constexpr Kind kEngineKind = {EnginePlugin, "engine", "engine"};

struct Command
{
    ProfileSwitch which;
    bool on;
};
// The number of a command is its place.
constexpr Command kCommands[] = {
    {ProfileSwitch::Analytics, false},
    {ProfileSwitch::Analytics, true},
    {ProfileSwitch::MD, false},
    {ProfileSwitch::MD, true},
};

constexpr const char* MayNot(Role needed)
{
    return needed == Role::Administrator ? " may not change profiles" : " may not run or stop anything";
}

void RequireRole(Role needed)
{
    const platform::Caller* const caller = platform::CurrentCaller();
    if (caller == nullptr || caller->role >= needed)
        return;
    platform::gRefusedByRole.Add();
    throw ClientFault((caller->name.empty() ? "Nobody" : caller->name) + MayNot(needed));
}

// One call that changes the store, with its line in the audit trail. `action` may fill in the entry.
template <class Action>
bool Change(Role needed, AuditEntry entry, const Action& action)
{
    platform::Audited(entry,
                      [&]
                      {
                          RequireRole(needed);
                          action(entry);
                      });
    platform::gStoreChanges.Add();
    return true;
}

// Why a text can't be a profile's name or camera preset; empty if it can. Both go out in XML documents.
std::string TextRefusal(const std::string& what, const std::string& text)
{
    if (text.size() > kTextBytes)
        return what + " is longer than " + std::to_string(kTextBytes) + " bytes";
    return xml::IsXmlText(text) ? "" : what + " holds a character that XML does not allow";
}
std::string NameRefusal(const std::string& name) { return TextRefusal("The profile name", name); }
std::string PresetRefusal(const std::string& preset) { return TextRefusal("The camera preset", preset); }

// A profile that doesn't exist is said before anything else that is wrong.
void Refuse(ProfileStore& store, int profileId, const std::string& refusal)
{
    if (refusal.empty())
        return;
    store.Require(profileId);
    throw ClientFault(refusal);
}

// The engine's part of a behavior comes before its rule, in a call of its own. It is held until the request
// brings the rule, so that both are stored or neither; without a rule it is stored by itself, before the
// request does anything else with a store, or when it ends.
struct HeldEngine
{
    ProfileStore* store = nullptr; // null: none is held
    int profile = 0;
    StoredConfiguration engine;
};
thread_local HeldEngine gHeld;

AuditEntry EntryOf(int profile, const StoredConfiguration& engine)
{
    return {.change = "SetEngineConfig", .profile = profile, .plugin = engine.id};
}

void StoreHeld()
{
    if (gHeld.store == nullptr)
        return;
    const HeldEngine held = std::exchange(gHeld, {});
    Change(Role::Administrator, EntryOf(held.profile, held.engine),
           [&held](AuditEntry& /*entry*/) { held.store->Put(held.profile, {held.engine}); });
}

// `store`, after what is held.
ProfileStore& Settled(ProfileStore& store)
{
    StoreHeld();
    return store;
}

void StoreHeldAtEnd()
{
    try
    {
        StoreHeld();
    }
    catch (const std::exception& error)
    {
        platform::Say(std::string("The configuration of an engine was not stored: ") + error.what());
    }
}

// Adds the plug-in to the profile with its default configuration, not active.
void AddPlugin(ProfileStore& store, int profileId, const Kind& kind, const std::string& id)
{
    store.Require(profileId);
    const Manifest manifest = platform::ManifestOf(id);
    if (manifest.Type() != kind.typeName)
        throw ClientFault("There is no " + std::string(kind.word) + " " + id + " on this camera");
    const std::string config = PluginManager().GetDefaultConfiguration(id);
    if (config.empty())
        throw AnalyticsFault("The plug-in " + id + " brings no default configuration; set one instead");
    if (!store.Add(profileId, {kind.type, manifest.Id(), config, false}))
        throw ClientFault("Profile " + std::to_string(profileId) + " has the " + kind.word + " " + id +
                          " already");
}

void DeletePlugin(ProfileStore& store, int profileId, const Kind& kind, const std::string& id)
{
    if (!store.Remove(profileId, kind.type, id))
        throw ClientFault("Profile " + std::to_string(profileId) + " has no " + kind.word + " " + id);
}

template <class Value>
bool Take(std::optional<Value> found, Value& target)
{
    if (found)
        target = std::move(*found);
    return found.has_value();
}
} // namespace

ProfileManager::ProfileManager()
    : m_store(std::make_unique<ProfileStore>(platform::CurrentConfiguration().stateFolder))
{
}

ProfileManager::~ProfileManager()
{
    if (gHeld.store == m_store.get())
        StoreHeldAtEnd();
}

bool ProfileManager::CreateProfile(int& profileId, const std::string& name)
{
    return Change(Role::Administrator, {.change = "CreateProfile"},
                  [&](AuditEntry& entry)
                  {
                      if (const std::string refusal = NameRefusal(name); !refusal.empty())
                          throw ClientFault(refusal);
                      profileId = Settled(*m_store).Create(name);
                      entry.profile = profileId;
                  });
}

bool ProfileManager::DeleteProfile(int profileId)
{
    return Change(Role::Administrator, {.change = "DeleteProfile", .profile = profileId},
                  [&](AuditEntry& /*entry*/) { Settled(*m_store).Delete(profileId); });
}

bool ProfileManager::ExecuteProfile(int profileId)
{
    return Change(Role::Operator, {.change = "ExecuteProfile", .profile = profileId},
                  [&](AuditEntry& /*entry*/) { Settled(*m_store).Activate(profileId); });
}

bool ProfileManager::StopProfile(int profileId)
{
    const auto profile = profileId == INVALID_PROFILE_ID ? std::nullopt : std::optional(profileId);
    return Change(Role::Operator, {.change = "StopProfile", .profile = profileId},
                  [&](AuditEntry& /*entry*/) { Settled(*m_store).Deactivate(profile); });
}

bool ProfileManager::AlgorithmControl(int command)
{
    return Change(Role::Operator, {.change = "AlgorithmControl", .command = command},
                  [&](AuditEntry& /*entry*/)
                  {
                      if (command < 0 || command >= std::ssize(kCommands))
                          throw ClientFault("Unknown algorithm command " + std::to_string(command));
                      Settled(*m_store).Switch(kCommands[command].which, kCommands[command].on);
                  });
}

bool ProfileManager::GetActiveProfile(int& profileId) const
{
    profileId = Settled(*m_store).Active().value_or(profileId);
    return true;
}

bool ProfileManager::GetProfileList(std::vector<ProfileSummary>& list) const
{
    list = Settled(*m_store).List();
    return true;
}

std::string ProfileManager::GetProfileName(int profileId)
{
    return Settled(*m_store).Find(profileId).value_or(ProfileSummary()).name;
}

std::string ProfileManager::GetCameraPreset(int profileId)
{
    return Settled(*m_store).Find(profileId).value_or(ProfileSummary()).preset;
}

bool ProfileManager::SetProfileName(int profileId, const std::string& name)
{
    return Change(Role::Administrator, {.change = "SetProfileName", .profile = profileId},
                  [&](AuditEntry& /*entry*/)
                  {
                      Refuse(Settled(*m_store), profileId, NameRefusal(name));
                      Settled(*m_store).Describe(profileId, name, std::nullopt);
                  });
}

bool ProfileManager::SetCameraPreset(int profileId, const std::string& preset)
{
    return Change(Role::Administrator, {.change = "SetCameraPreset", .profile = profileId},
                  [&](AuditEntry& /*entry*/)
                  {
                      Refuse(Settled(*m_store), profileId, PresetRefusal(preset));
                      Settled(*m_store).Describe(profileId, std::nullopt, preset);
                  });
}

std::string ProfileManager::GetConfig(int profileId) { return Settled(*m_store).Merged(profileId); }

bool ProfileManager::GetRules(int profileId, std::vector<std::string>& rules) const
{
    return Take(Settled(*m_store).Ids(profileId, RulePlugin, false), rules);
}

bool ProfileManager::GetActiveRules(int profileId, std::vector<std::string>& rules)
{
    return Take(Settled(*m_store).Ids(profileId, RulePlugin, true), rules);
}

bool ProfileManager::GetRuleConfig(int profileId, const std::string& id, std::string& config) const
{
    return Take(Settled(*m_store).Document(profileId, RulePlugin, id), config);
}

bool ProfileManager::SetRuleConfig(int profileId, const std::string& id, const std::string& config,
                                   bool active)
{
    std::vector<StoredConfiguration> parts = {{RulePlugin, id, config, active}};
    const auto store = [&]
    {
        return Change(Role::Administrator, {.change = "SetRuleConfig", .profile = profileId, .plugin = id},
                      [&](AuditEntry& /*entry*/)
                      {
                          Refuse(Settled(*m_store), profileId, platform::DocumentRefusal("behavior", config));
                          m_store->Put(profileId, parts);
                      });
    };
    if (gHeld.store != m_store.get() || gHeld.profile != profileId)
        return store();
    parts.push_back(std::exchange(gHeld, {}).engine);
    return Change(Role::Administrator, EntryOf(profileId, parts.back()),
                  [&](AuditEntry& /*entry*/) { store(); });
}

bool ProfileManager::AddRule(int profileId, const std::string& id)
{
    return Change(Role::Administrator, {.change = "AddRule", .profile = profileId, .plugin = id},
                  [&](AuditEntry& /*entry*/) { AddPlugin(Settled(*m_store), profileId, kRuleKind, id); });
}

bool ProfileManager::DeleteRule(int profileId, const std::string& id)
{
    return Change(Role::Administrator, {.change = "DeleteRule", .profile = profileId, .plugin = id},
                  [&](AuditEntry& /*entry*/) { DeletePlugin(Settled(*m_store), profileId, kRuleKind, id); });
}

bool ProfileManager::GetEngines(int profileId, std::vector<std::string>& engines) const
{
    return Take(Settled(*m_store).Ids(profileId, EnginePlugin, false), engines);
}

bool ProfileManager::GetEngineConfig(int profileId, const std::string& id, std::string& config)
{
    return Take(Settled(*m_store).Document(profileId, EnginePlugin, id), config);
}

bool ProfileManager::SetEngineConfig(int profileId, const std::string& id, const std::string& config)
{
    const StoredConfiguration engine = {EnginePlugin, id, config, false};
    AuditEntry entry = EntryOf(profileId, engine);
    try
    {
        RequireRole(Role::Administrator);
        Settled(*m_store).RequireRoom(profileId, engine);
    }
    catch (const std::exception&)
    {
        platform::Audited(entry, [] { throw; });
    }
    if (config.empty())
    {
        entry.result = platform::AuditResult::Refused;
        entry.reason = "The configuration is empty";
        platform::Audit(entry);
        return false;
    }
    gHeld = {m_store.get(), profileId, engine};
    if (platform::CurrentRequest() == 0)
        StoreHeld();
    else
        platform::AtRequestEnd(StoreHeldAtEnd);
    return true;
}

bool ProfileManager::SetEngineConfig(int profileId, const std::string& id, const std::string& config,
                                     const std::string& profileName, const std::string& cameraPreset)
{
    const auto store = [&](AuditEntry& /*entry*/)
    {
        for (const std::string& refusal : {platform::DocumentRefusal("scene", config),
                                           NameRefusal(profileName), PresetRefusal(cameraPreset)})
            Refuse(Settled(*m_store), profileId, refusal);
        Settled(*m_store).Put(profileId, {{EnginePlugin, id, config, false}}, profileName, cameraPreset);
    };
    return Change(Role::Administrator, {.change = "SetEngineConfig", .profile = profileId, .plugin = id},
                  store);
}

bool ProfileManager::AddEngine(int profileId, const std::string& id)
{
    return Change(Role::Administrator, {.change = "AddEngine", .profile = profileId, .plugin = id},
                  [&](AuditEntry& /*entry*/) { AddPlugin(Settled(*m_store), profileId, kEngineKind, id); });
}

bool ProfileManager::DeleteEngine(int profileId, const std::string& id)
{
    return Change(Role::Administrator, {.change = "DeleteEngine", .profile = profileId, .plugin = id},
                  [&](AuditEntry& /*entry*/)
                  { DeletePlugin(Settled(*m_store), profileId, kEngineKind, id); });
}

bool ProfileManager::GetMDActiveState() { return Settled(*m_store).IsOn(ProfileSwitch::MD); }

bool ProfileManager::HasEnoughResource(int profileId, const std::string& id)
{
    Settled(*m_store).Require(profileId);
    if (platform::ManifestOf(id).Type() != kRuleKind.typeName)
        throw ClientFault("There is no behavior " + id + " on this camera");
    std::vector<std::string> rules;
    GetActiveRules(profileId, rules);
    rules.push_back(id);
    return platform::CostOf(rules) <= Settings::MaxResource();
}

} // namespace analytics
