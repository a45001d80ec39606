#include "store/ProfileStore.h"

#include <analytics/Faults.h>
#include <analytics/Platform.h>

#include "metrics/Metrics.h"
#include "request/DocumentLimit.h"
#include "request/WorkMemory.h"
#include "store/SizeLimits.h"
#include "store/StoreConnection.h"

#include <algorithm>

namespace analytics
{
namespace
{
using platform::Query;
using platform::StoreConnection;

constexpr const char* kList =
    "SELECT profile.id, name, preset, profile.id IS active_profile FROM profile, state ORDER BY profile.id";
constexpr const char* kFind =
    "SELECT profile.id, name, preset, profile.id IS active_profile FROM profile, state WHERE profile.id = ?";
// A left join: no row without the profile, one row with a null if the profile holds nothing.
constexpr const char* kIds = "SELECT plugin FROM profile LEFT JOIN configuration"
                             " ON profile = profile.id AND kind = ? AND active >= ?"
                             " WHERE profile.id = ? ORDER BY plugin";
constexpr const char* kDocument =
    "SELECT document FROM configuration WHERE profile = ? AND kind = ? AND plugin = ?";
constexpr const char* kDocumentBytes = "SELECT length(CAST(document AS BLOB)) FROM configuration"
                                       " WHERE profile = ? AND kind = ? AND plugin = ?";
constexpr const char* kPut = "INSERT INTO configuration (profile, kind, plugin, active, document)"
                             " VALUES (?, ?, ?, ?, ?) ON CONFLICT DO UPDATE"
                             " SET active = excluded.active, document = excluded.document";
constexpr const char* kAdd = "INSERT INTO configuration (profile, kind, plugin, active, document)"
                             " VALUES (?, ?, ?, ?, ?) ON CONFLICT DO NOTHING";
constexpr const char* kRemove = "DELETE FROM configuration WHERE profile = ? AND kind = ? AND plugin = ?";

struct SwitchStatements
{
    const char* read;
    const char* write;
};
// In the order of ProfileSwitch.
constexpr SwitchStatements kSwitches[] = {
    {"SELECT analytics_run FROM state", "UPDATE state SET analytics_run = ?"},
    {"SELECT md_active FROM state", "UPDATE state SET md_active = ?"},
};

// What a change is about, if it isn't a profile that was there before.
constexpr std::optional<int> kCamera = std::nullopt;
constexpr int kNew = -1;

// The store that StoreHealth() looks at.
platform::Mutex gOpenLock;
platform::Store* gOpen ANALYTICS_GUARDED_BY(gOpenLock) = nullptr;

ProfileSummary SummaryOf(Query& row) { return {row.Number(0), row.Text(1), row.Text(2), row.Flag(3)}; }

void RequireIn(StoreConnection& connection, int profile)
{
    if (!Query(connection, "SELECT 1 FROM profile WHERE id = ?", profile).Next())
        throw ClientFault("Profile " + std::to_string(profile) + " does not exist");
}

int Insert(StoreConnection& connection, const char* sql, int profile, const StoredConfiguration& stored)
{
    return Query(connection, sql, profile, static_cast<int>(stored.kind), stored.id, stored.active ? 1 : 0,
                 stored.document)
        .Run();
}

// `limit`: asked on the thread of the request, since the one that commits may be another's.
void RequireStorableIn(StoreConnection& connection, int profile, std::int64_t limit)
{
    platform::RequireStorable(platform::BytesIn(connection, profile), limit);
}

void DescribeIn(StoreConnection& connection, int profile, const std::optional<std::string>& name,
                const std::optional<std::string>& preset)
{
    if (name)
        Query(connection, "UPDATE profile SET name = ? WHERE id = ?", *name, profile).Run();
    if (preset)
        Query(connection, "UPDATE profile SET preset = ? WHERE id = ?", *preset, profile).Run();
}

// Of what was in memory before, perhaps.
void BeginHolding(const std::string& document)
{
    platform::LiftDocumentLimit();
    platform::ClaimForStored(document.size());
}

std::optional<std::string> Given(const std::string& text)
{
    return text.empty() ? std::nullopt : std::optional(text);
}

} // namespace

ProfileStore::ProfileStore(const std::string& folder)
    : m_copy(platform::DatabaseIn(folder)),
      m_store(folder),
      m_engine(platform::ConfiguredEngineFolder(), m_store)
{
    m_copy.AfterStart();
    platform::ReportOversize(m_store);
    CountProfiles();
    m_engine.Begin();
    const platform::MutexLock hold(gOpenLock);
    gOpen = &m_store;
}

ProfileStore::~ProfileStore()
{
    const platform::MutexLock hold(gOpenLock);
    if (gOpen == &m_store)
        gOpen = nullptr;
}

std::string platform::StoreHealth()
{
    const MutexLock hold(gOpenLock);
    return gOpen == nullptr ? "" : gOpen->Failure();
}

void ProfileStore::Change(std::optional<int> profile, const platform::Store::Operation& operation)
{
    m_engine.Write(profile, operation);
    m_copy.AfterChange();
}

// For the metrics. A change that is stored isn't called failed because they can't be read.
void ProfileStore::CountProfiles()
try
{
    m_store.Read(
        [](StoreConnection& connection)
        {
            Query row(connection,
                      "SELECT (SELECT count(*) FROM profile), coalesce(active_profile, -1) FROM state");
            if (!row.Next())
                return;
            platform::gProfiles.Set(row.Number(0));
            platform::gActiveProfile.Set(row.Number(1));
        });
}
catch (const AnalyticsFault&)
{
    // The store has said it.
}

int ProfileStore::Create(const std::string& name)
{
    int profile = 0;
    Change(kNew,
           [&](StoreConnection& connection)
           {
               Query(connection, "INSERT INTO profile (name) VALUES (?)", name).Run();
               profile = static_cast<int>(connection.Database().getLastInsertRowid());
           });
    CountProfiles();
    return profile;
}

// The database's own references stop the profile and take its configurations along.
void ProfileStore::Delete(int profile)
{
    Change(profile,
           [&](StoreConnection& connection)
           {
               RequireIn(connection, profile);
               Query(connection, "DELETE FROM profile WHERE id = ?", profile).Run();
           });
    CountProfiles();
}

void ProfileStore::Activate(int profile)
{
    Change(kCamera,
           [&](StoreConnection& connection)
           {
               RequireIn(connection, profile);
               Query(connection, "UPDATE state SET active_profile = ?", profile).Run();
           });
    CountProfiles();
}

void ProfileStore::Deactivate(std::optional<int> profile)
{
    Change(kCamera,
           [&](StoreConnection& connection)
           {
               if (profile)
                   RequireIn(connection, *profile);
               Query(
                   connection,
                   "UPDATE state SET active_profile = NULL WHERE active_profile = ifnull(?, active_profile)",
                   profile)
                   .Run();
           });
    CountProfiles();
}

std::optional<int> ProfileStore::Active()
{
    const auto read = [](StoreConnection& connection)
    {
        Query row(connection, "SELECT active_profile FROM state WHERE active_profile IS NOT NULL");
        return row.Next() ? std::optional(row.Number(0)) : std::nullopt;
    };
    return *m_active.Get(0, [&] { return m_store.Get(read); });
}

std::vector<ProfileSummary> ProfileStore::List()
{
    const auto read = [](StoreConnection& connection)
    {
        std::vector<ProfileSummary> list;
        Query row(connection, kList);
        while (row.Next())
            list.push_back(SummaryOf(row));
        return list;
    };
    const auto size = [](const std::vector<ProfileSummary>& list)
    {
        std::size_t bytes = 0;
        for (const ProfileSummary& profile : list)
            bytes += sizeof(profile) + profile.name.size() + profile.preset.size();
        return bytes;
    };
    return *m_list.Get(
        0, [&] { return m_store.Get(read); }, size);
}

std::optional<ProfileSummary> ProfileStore::Find(int profile)
{
    const auto read = [profile](StoreConnection& connection)
    {
        Query row(connection, kFind, profile);
        return row.Next() ? std::optional(SummaryOf(row)) : std::nullopt;
    };
    return *m_found.Get(profile, [&] { return m_store.Get(read); });
}

void ProfileStore::Require(int profile)
{
    m_store.Read([profile](StoreConnection& connection) { RequireIn(connection, profile); });
}

void ProfileStore::Describe(int profile, const std::optional<std::string>& name,
                            const std::optional<std::string>& preset)
{
    Change(profile,
           [&](StoreConnection& connection)
           {
               RequireIn(connection, profile);
               DescribeIn(connection, profile, name, preset);
           });
}

void ProfileStore::Switch(ProfileSwitch which, bool on)
{
    Change(kCamera, [&](StoreConnection& connection)
           { Query(connection, kSwitches[static_cast<int>(which)].write, on ? 1 : 0).Run(); });
}

bool ProfileStore::IsOn(ProfileSwitch which)
{
    const auto read = [which](StoreConnection& connection)
    {
        Query row(connection, kSwitches[static_cast<int>(which)].read);
        return row.Next() && row.Flag(0);
    };
    return *m_switches.Get(static_cast<int>(which), [&] { return m_store.Get(read); });
}

std::optional<std::vector<std::string>> ProfileStore::Ids(int profile, PluginType kind, bool onlyActive)
{
    return m_store.Get(
        [&](StoreConnection& connection)
        {
            std::optional<std::vector<std::string>> ids;
            Query row(connection, kIds, static_cast<int>(kind), onlyActive ? 1 : 0, profile);
            while (row.Next())
            {
                if (!ids)
                    ids.emplace();
                if (!row.IsNull(0))
                    ids->push_back(row.Text(0));
            }
            return ids;
        });
}

std::optional<std::string> ProfileStore::Document(int profile, PluginType kind, const std::string& id)
{
    const auto read = [&](const char* sql)
    {
        return m_store.Get(
            [&](StoreConnection& connection)
            {
                Query row(connection, sql, profile, static_cast<int>(kind), id);
                return row.Next() ? std::optional(row.Text(0)) : std::nullopt;
            });
    };
    const auto document = m_documents.Get(
        {profile, kind, id},
        [&]
        {
            if (const auto bytes = read(kDocumentBytes))
                BeginReading(profile, std::stoll(*bytes));
            return read(kDocument);
        },
        [](const std::optional<std::string>& text) { return text ? text->size() : 0; });
    if (*document)
        BeginHolding(**document);
    return *document;
}

// Before any of it is in memory.
void ProfileStore::BeginReading(int profile, std::int64_t bytes)
{
    platform::RequireReadable(profile, bytes);
    platform::LiftDocumentLimit();
    platform::ClaimForStored(static_cast<std::size_t>(bytes));
}

std::string ProfileStore::Merged(int profile)
{
    const auto merge = [&]
    {
        BeginReading(profile, m_store.Get([&](StoreConnection& c) { return platform::BytesIn(c, profile); }));
        return Merge(m_store.Get([&](StoreConnection& c) { return ConfigurationsIn(c, profile); }));
    };
    const auto merged = m_merged.Get(profile, merge, &std::string::size);
    BeginHolding(*merged);
    return *merged;
}

void ProfileStore::RequireRoom(int profile, const StoredConfiguration& configuration)
{
    const std::int64_t limit = platform::ProfileBytes();
    m_store.Read(
        [&](StoreConnection& connection)
        {
            RequireIn(connection, profile);
            Query row(connection, kDocumentBytes, profile, static_cast<int>(configuration.kind),
                      configuration.id);
            const std::int64_t replaced = row.Next() ? row.Long(0) : 0;
            platform::RequireStorable(platform::BytesIn(connection, profile) - replaced +
                                          std::ssize(configuration.document),
                                      limit);
        });
}

void ProfileStore::Put(int profile, const std::vector<StoredConfiguration>& configurations,
                       const std::string& name, const std::string& preset)
{
    const std::int64_t limit = platform::ProfileBytes();
    Change(profile,
           [&](StoreConnection& connection)
           {
               RequireIn(connection, profile);
               for (const StoredConfiguration& configuration : configurations)
                   Insert(connection, kPut, profile, configuration);
               RequireStorableIn(connection, profile, limit);
               DescribeIn(connection, profile, Given(name), Given(preset));
           });
}

bool ProfileStore::Add(int profile, const StoredConfiguration& configuration)
{
    const std::int64_t limit = platform::ProfileBytes();
    int added = 0;
    Change(profile,
           [&](StoreConnection& connection)
           {
               RequireIn(connection, profile);
               added = Insert(connection, kAdd, profile, configuration);
               RequireStorableIn(connection, profile, limit);
           });
    return added != 0;
}

bool ProfileStore::Remove(int profile, PluginType kind, const std::string& id)
{
    int removed = 0;
    Change(profile,
           [&](StoreConnection& connection)
           {
               RequireIn(connection, profile);
               removed = Query(connection, kRemove, profile, static_cast<int>(kind), id).Run();
           });
    return removed != 0;
}

} // namespace analytics
