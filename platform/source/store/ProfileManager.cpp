#include <analytics/ProfileManager.h>

#include <analytics/Faults.h>
#include <analytics/PluginManager.h>
#include <analytics/Settings.h>

#include "request/DocumentLimit.h"
#include "request/WorkMemory.h"
#include "settings/Configuration.h"
#include "store/ProfileStore.h"
#include "store/SizeLimits.h"
#include "store/StoreConnection.h"

#include <iterator>

namespace analytics
{
namespace
{
using platform::AuditEntry;
using platform::Query;
using platform::Role;
using platform::StoreConnection;

struct Kind
{
    PluginType type;
    const char* typeName;
    const char* word; // towards clients
};
constexpr Kind kRuleKind = {RulePlugin, "rule", "behavior"};
constexpr Kind kEngineKind = {EnginePlugin, "engine", "engine"};

// The number of a command is its place.
constexpr const char* kCommands[] = {
    "UPDATE state SET analytics_run = 0",
    "UPDATE state SET analytics_run = 1",
    "UPDATE state SET md_active = 0",
    "UPDATE state SET md_active = 1",
};

constexpr const char* kList =
    "SELECT profile.id, name, preset, profile.id IS active_profile FROM profile, state ORDER BY profile.id";
constexpr const char* kFind =
    "SELECT profile.id, name, preset, profile.id IS active_profile FROM profile, state WHERE profile.id = ?";

// An operation of one statement; RequireIn() comes first. Keeps references to the values.
template <class... Values>
auto OnProfile(int profile, const std::string& refusal, const char* sql, const Values&... values)
{
    return [profile, refusal, sql, &values...](StoreConnection& connection)
    {
        RequireIn(connection, profile, refusal);
        Query(connection, sql, values...).Run();
    };
}

template <class Value>
bool Take(std::optional<Value> found, Value& target)
{
    if (found)
        target = std::move(*found);
    return found.has_value();
}

// False if there is no such profile.
bool TakeIds(ProfileStore& store, int profile, const Kind& kind, bool onlyActive,
             std::vector<std::string>& target)
{
    return Take(store.Get([&](StoreConnection& c) { return IdsIn(c, profile, kind.type, onlyActive); }),
                target);
}

// Of what is given back, which may have been in memory before.
void BeginHolding(std::int64_t bytes)
{
    platform::LiftDocumentLimit();
    platform::ClaimForStored(static_cast<std::size_t>(bytes));
}

// Before any of it is in memory.
void BeginReading(int profile, std::int64_t bytes)
{
    platform::RequireReadable(profile, bytes);
    BeginHolding(bytes);
}

bool TakeDocument(ProfileStore& store, int profile, const Kind& kind, const std::string& id,
                  std::string& target)
{
    const auto read = [&]
    {
        const auto of = [&](auto* what)
        { return store.Get([&](StoreConnection& c) { return what(c, profile, kind.type, id); }); };
        if (const auto bytes = of(DocumentBytesIn))
            BeginReading(profile, *bytes);
        return of(DocumentIn);
    };
    const auto size = [](const std::optional<std::string>& text) { return text ? text->size() : 0; };
    auto document = store.Cached(&ProfileStore::documents, std::tuple(profile, kind.type, id), read, size);
    if (document)
        BeginHolding(std::ssize(*document));
    return Take(std::move(document), target);
}

ProfileSummary SummaryOf(Query& row) { return {row.Number(0), row.Text(1), row.Text(2), row.Flag(3)}; }

// An empty one if there is no such profile.
ProfileSummary Find(ProfileStore& store, int profile)
{
    const auto read = [profile](StoreConnection& connection)
    {
        Query row(connection, kFind, profile);
        return row.Next() ? std::optional(SummaryOf(row)) : std::nullopt;
    };
    return store.Cached(&ProfileStore::found, profile, [&] { return store.Get(read); })
        .value_or(ProfileSummary());
}

// Adds the plug-in to the profile with its default configuration, not active.
bool AddPlugin(ProfileStore& store, AuditEntry entry, const Kind& kind)
{
    const int profile = entry.profile.value();
    const std::string& id = entry.plugin;
    const auto add = [&]
    {
        store.Require(profile);
        const Manifest manifest = platform::ManifestOf(id);
        if (manifest.Type() != kind.typeName)
            throw ClientFault("There is no " + std::string(kind.word) + " " + id + " on this camera");
        const std::string config = PluginManager().GetDefaultConfiguration(id);
        if (config.empty())
            throw AnalyticsFault("The plug-in " + id + " brings no default configuration; set one instead");
        const std::int64_t limit = platform::ProfileBytes();
        store.Write(profile,
                    [&](StoreConnection& connection)
                    {
                        RequireIn(connection, profile);
                        if (!AddIn(connection, profile, {kind.type, manifest.Id(), config, false}))
                            throw ClientFault("Profile " + std::to_string(profile) + " has the " + kind.word +
                                              " " + id + " already");
                        platform::RequireStorable(BytesIn(connection, profile), limit);
                    });
    };
    return store.Audited(Role::Administrator, entry, add);
}

bool DeletePlugin(ProfileStore& store, const AuditEntry& entry, const Kind& kind)
{
    return store.Change(Role::Administrator, entry,
                        [&](StoreConnection& connection)
                        {
                            const int profile = entry.profile.value();
                            RequireIn(connection, profile);
                            if (!DeleteIn(connection, profile, kind.type, entry.plugin))
                                throw ClientFault("Profile " + std::to_string(profile) + " has no " +
                                                  kind.word + " " + entry.plugin);
                        });
}
} // namespace

ProfileManager::ProfileManager()
    : m_store(std::make_unique<ProfileStore>(platform::CurrentConfiguration().stateFolder))
{
}

ProfileManager::~ProfileManager() = default;

bool ProfileManager::CreateProfile(int& profileId, const std::string& name)
{
    AuditEntry entry{.change = "CreateProfile"};
    const auto create = [&]
    {
        if (const std::string refusal = platform::NameRefusal(name); !refusal.empty())
            throw ClientFault(refusal);
        int created = 0;
        m_store->Write(INVALID_PROFILE_ID,
                       [&](StoreConnection& connection)
                       {
                           Query(connection, "INSERT INTO profile (name) VALUES (?)", name).Run();
                           created = static_cast<int>(connection.Database().getLastInsertRowid());
                       });
        profileId = created;
        entry.profile = created;
    };
    return m_store->Audited(Role::Administrator, entry, create);
}

// The database's own references stop the profile and take its configurations along.
bool ProfileManager::DeleteProfile(int profileId)
{
    return m_store->Change(Role::Administrator, {.change = "DeleteProfile", .profile = profileId},
                           OnProfile(profileId, "", "DELETE FROM profile WHERE id = ?", profileId));
}

bool ProfileManager::ExecuteProfile(int profileId)
{
    return m_store->Change(Role::Operator, {.change = "ExecuteProfile", .profile = profileId},
                           OnProfile(profileId, "", "UPDATE state SET active_profile = ?", profileId));
}

bool ProfileManager::StopProfile(int profileId)
{
    const auto profile = profileId == INVALID_PROFILE_ID ? std::nullopt : std::optional(profileId);
    const auto stop = [&](StoreConnection& connection)
    {
        if (profile)
            RequireIn(connection, *profile);
        Query(connection,
              "UPDATE state SET active_profile = NULL WHERE active_profile = ifnull(?, active_profile)",
              profile)
            .Run();
    };
    return m_store->Change(Role::Operator, {.change = "StopProfile", .profile = profileId}, stop);
}

bool ProfileManager::AlgorithmControl(int command)
{
    return m_store->Change(Role::Operator, {.change = "AlgorithmControl", .command = command},
                           [&](StoreConnection& connection)
                           {
                               if (command < 0 || command >= std::ssize(kCommands))
                                   throw ClientFault("Unknown algorithm command " + std::to_string(command));
                               Query(connection, kCommands[command]).Run();
                           });
}

bool ProfileManager::GetActiveProfile(int& profileId) const
{
    Take(m_store->Get(ActiveIn), profileId);
    return true;
}

bool ProfileManager::GetProfileList(std::vector<ProfileSummary>& list) const
{
    const auto read = [](StoreConnection& connection)
    {
        std::vector<ProfileSummary> profiles;
        Query row(connection, kList);
        while (row.Next())
            profiles.push_back(SummaryOf(row));
        return profiles;
    };
    const auto size = [](const std::vector<ProfileSummary>& profiles)
    {
        std::size_t bytes = 0;
        for (const ProfileSummary& profile : profiles)
            bytes += sizeof(profile) + profile.name.size() + profile.preset.size();
        return bytes;
    };
    list = m_store->Cached(
        &ProfileStore::list, 0, [&] { return m_store->Get(read); }, size);
    return true;
}

std::string ProfileManager::GetProfileName(int profileId) { return Find(*m_store, profileId).name; }
std::string ProfileManager::GetCameraPreset(int profileId) { return Find(*m_store, profileId).preset; }

bool ProfileManager::SetProfileName(int profileId, const std::string& name)
{
    return m_store->Change(Role::Administrator, {.change = "SetProfileName", .profile = profileId},
                           OnProfile(profileId, platform::NameRefusal(name),
                                     "UPDATE profile SET name = ? WHERE id = ?", name, profileId));
}

bool ProfileManager::SetCameraPreset(int profileId, const std::string& preset)
{
    return m_store->Change(Role::Administrator, {.change = "SetCameraPreset", .profile = profileId},
                           OnProfile(profileId, platform::PresetRefusal(preset),
                                     "UPDATE profile SET preset = ? WHERE id = ?", preset, profileId));
}

std::string ProfileManager::GetConfig(int profileId)
{
    const auto merge = [&]
    {
        BeginReading(profileId, m_store->Get([&](StoreConnection& c) { return BytesIn(c, profileId); }));
        return MergeProfile(m_store->Get([&](StoreConnection& c) { return ConfigurationsIn(c, profileId); }));
    };
    std::string merged = m_store->Cached(&ProfileStore::merged, profileId, merge, &std::string::size);
    BeginHolding(std::ssize(merged));
    return merged;
}

bool ProfileManager::GetRules(int profileId, std::vector<std::string>& rules) const
{
    return TakeIds(*m_store, profileId, kRuleKind, false, rules);
}

bool ProfileManager::GetActiveRules(int profileId, std::vector<std::string>& rules)
{
    return TakeIds(*m_store, profileId, kRuleKind, true, rules);
}

bool ProfileManager::GetRuleConfig(int profileId, const std::string& id, std::string& config) const
{
    return TakeDocument(*m_store, profileId, kRuleKind, id, config);
}

bool ProfileManager::SetRuleConfig(int profileId, const std::string& id, const std::string& config,
                                   bool active)
{
    std::vector<StoredConfiguration> parts = {{RulePlugin, id, config, active}};
    const auto engine = m_store->TakeHeld(profileId);
    if (engine)
        parts.push_back(*engine);
    const auto put = [&]
    {
        return m_store->Put({.change = "SetRuleConfig", .profile = profileId, .plugin = id}, parts,
                            platform::DocumentRefusal("behavior", config));
    };
    if (!engine)
        return put();
    AuditEntry entry{.change = "SetEngineConfig", .profile = profileId, .plugin = engine->id};
    return m_store->Audited(Role::Administrator, entry, put);
}

bool ProfileManager::AddRule(int profileId, const std::string& id)
{
    return AddPlugin(*m_store, {.change = "AddRule", .profile = profileId, .plugin = id}, kRuleKind);
}

bool ProfileManager::DeleteRule(int profileId, const std::string& id)
{
    return DeletePlugin(*m_store, {.change = "DeleteRule", .profile = profileId, .plugin = id}, kRuleKind);
}

bool ProfileManager::GetEngines(int profileId, std::vector<std::string>& engines) const
{
    return TakeIds(*m_store, profileId, kEngineKind, false, engines);
}

bool ProfileManager::GetEngineConfig(int profileId, const std::string& id, std::string& config)
{
    return TakeDocument(*m_store, profileId, kEngineKind, id, config);
}

bool ProfileManager::SetEngineConfig(int profileId, const std::string& id, const std::string& config)
{
    return m_store->Hold({.change = "SetEngineConfig", .profile = profileId, .plugin = id},
                         {EnginePlugin, id, config, false});
}

bool ProfileManager::SetEngineConfig(int profileId, const std::string& id, const std::string& config,
                                     const std::string& profileName, const std::string& cameraPreset)
{
    std::string refusal = platform::DocumentRefusal("scene", config);
    for (const std::string& other :
         {platform::NameRefusal(profileName), platform::PresetRefusal(cameraPreset)})
        if (refusal.empty())
            refusal = other;
    return m_store->Put({.change = "SetEngineConfig", .profile = profileId, .plugin = id},
                        {{EnginePlugin, id, config, false}}, refusal, profileName, cameraPreset);
}

bool ProfileManager::AddEngine(int profileId, const std::string& id)
{
    return AddPlugin(*m_store, {.change = "AddEngine", .profile = profileId, .plugin = id}, kEngineKind);
}

bool ProfileManager::DeleteEngine(int profileId, const std::string& id)
{
    return DeletePlugin(*m_store, {.change = "DeleteEngine", .profile = profileId, .plugin = id},
                        kEngineKind);
}

bool ProfileManager::GetMDActiveState()
{
    return m_store->Get(
        [](StoreConnection& connection)
        {
            Query row(connection, "SELECT md_active FROM state");
            return row.Next() && row.Flag(0);
        });
}

bool ProfileManager::HasEnoughResource(int profileId, const std::string& id)
{
    m_store->Require(profileId);
    if (platform::ManifestOf(id).Type() != kRuleKind.typeName)
        throw ClientFault("There is no behavior " + id + " on this camera");
    std::vector<std::string> rules;
    GetActiveRules(profileId, rules);
    rules.push_back(id);
    return platform::CostOf(rules) <= Settings::MaxResource();
}

} // namespace analytics
