#include "store/ProfileStore.h"

#include <analytics/Faults.h>
#include <analytics/Platform.h>

#include "files/StandardError.h"
#include "metrics/Metrics.h"
#include "request/DocumentLimit.h"
#include "request/Request.h"
#include "store/SizeLimits.h"
#include "store/StoreConnection.h"

#include <algorithm>

namespace analytics
{
namespace
{
using platform::AuditEntry;
using platform::EngineFeed;
using platform::EngineState;
using platform::Query;
using platform::Role;
using platform::StoreConnection;

// An operator runs and stops what there is, which isn't a matter of one profile.
constexpr std::optional<int> kCamera = std::nullopt;

constexpr const char* kDescribe = "UPDATE profile SET name = ifnull(nullif(?, ''), name),"
                                  " preset = ifnull(nullif(?, ''), preset) WHERE id = ?";

// What the engine is shown: the active profile and what is switched on.
constexpr const char* kState = "SELECT analytics_run, md_active, sequence, profile.id, name, preset"
                               " FROM state LEFT JOIN profile ON profile.id = active_profile";
// An engine may have seen larger numbers than those of a store that was put back.
constexpr const char* kCount = "UPDATE state SET sequence = max(sequence, ?1) + 1, shown = ?2"
                               " WHERE shown IS NOT ?2 OR sequence < ?1";
constexpr const char* kIsShown = "SELECT 1 FROM state WHERE shown = ? AND sequence >= ?";

// The store that StoreHealth() looks at.
platform::Mutex gOpenLock;
platform::Store* gOpen ANALYTICS_GUARDED_BY(gOpenLock) = nullptr;

struct HeldEngine
{
    ProfileStore* store = nullptr; // null: none is held
    int profile = 0;
    StoredConfiguration engine;
};
thread_local HeldEngine gHeld;

void RequireRole(Role needed)
{
    const platform::Caller* const caller = platform::CurrentCaller();
    if (caller == nullptr || caller->role >= needed)
        return;
    platform::gRefusedByRole.Add();
    throw ClientFault(
        (caller->name.empty() ? "Nobody" : caller->name) +
        (needed == Role::Administrator ? " may not change profiles" : " may not run or stop anything"));
}

// What it holds was admitted when it was stored, also if that was in another request than this thread's.
EngineState StateIn(StoreConnection& connection)
{
    platform::LiftDocumentLimit();
    EngineState state;
    Query row(connection, kState);
    if (!row.Next())
        return state;
    std::optional<ProfileSummary> active;
    if (!row.IsNull(3))
    {
        active = ProfileSummary(row.Number(3), row.Text(4), row.Text(5), true);
        state.profile = active->id;
        state.document = MergeProfile(ConfigurationsIn(connection, active->id));
    }
    state.facts = platform::EngineFacts(active, row.Flag(0), row.Flag(1), state.document);
    state.sequence = row.Long(2);
    return state;
}

// The state with its number, which is counted up if an engine has not seen this state last.
EngineState NextState(StoreConnection& connection, const EngineFeed& feed)
{
    EngineState state = StateIn(connection);
    Query(connection, kCount, feed.LastSequence(), state.facts).Run();
    Query row(connection, "SELECT sequence FROM state");
    if (row.Next())
        state.sequence = row.Long(0);
    return state;
}
} // namespace

ProfileStore::ProfileStore(const std::string& folder) : m_copy(platform::DatabaseIn(folder)), m_store(folder)
{
    m_copy.AfterStart();
    platform::ReportOversize(m_store);
    CountProfiles();
    BeginToShow();
    const platform::MutexLock hold(gOpenLock);
    gOpen = &m_store;
}

ProfileStore::~ProfileStore()
{
    if (gHeld.store == this)
        StoreHeldAtEnd();
    const platform::MutexLock hold(gOpenLock);
    if (gOpen == &m_store)
        gOpen = nullptr;
}

std::string platform::StoreHealth()
{
    const MutexLock hold(gOpenLock);
    return gOpen == nullptr ? "" : gOpen->Failure();
}

// Shows what is stored, before there are changes.
void ProfileStore::BeginToShow()
{
    const std::string folder = platform::ConfiguredEngineFolder();
    if (folder.empty())
        return;
    m_feed.emplace(folder);
    bool isShown = false;
    EngineState state;
    m_store.Read(
        [&](StoreConnection& connection)
        {
            state = StateIn(connection);
            isShown = Query(connection, kIsShown, state.facts, m_feed->LastSequence()).Next();
        });
    try
    {
        if (!isShown)
            m_store.Write([&](StoreConnection& connection) { state = NextState(connection, *m_feed); });
    }
    catch (const AnalyticsFault&)
    {
        // A store that can only be read now is shown all the same; the next change counts.
        state.sequence = std::max(state.sequence, m_feed->LastSequence());
    }
    m_feed->Show(std::move(state));
}

bool ProfileStore::Audited(Role needed, AuditEntry& entry, const std::function<void()>& change)
{
    platform::Audited(entry,
                      [&]
                      {
                          RequireRole(needed);
                          change();
                      });
    platform::gStoreChanges.Add();
    return true;
}

bool ProfileStore::Change(Role needed, AuditEntry entry, const Operation& operation)
{
    return Audited(needed, entry,
                   [&] { Write(needed == Role::Operator ? kCamera : entry.profile, operation); });
}

void ProfileStore::Write(std::optional<int> profile, const Operation& operation)
{
    Commit(profile, operation);
    CountProfiles();
}

void ProfileStore::Commit(std::optional<int> profile, const Operation& operation)
{
    StoreHeld();
    std::optional<EngineState> next;
    m_store.Write(
        [&](StoreConnection& connection)
        {
            next.reset(); // an operation may run again
            // A profile that was stopped a moment ago may still be in the files.
            const bool shows =
                m_feed && (!profile || ActiveIn(connection) == profile || m_feed->Profile() == *profile);
            operation(connection);
            if (shows)
                next = NextState(connection, *m_feed);
        });
    if (next)
        m_feed->Show(std::move(*next));
    m_copy.AfterChange();
}

bool ProfileStore::Put(AuditEntry entry, const std::vector<StoredConfiguration>& configurations,
                       const std::string& refusal, const std::string& name, const std::string& preset)
{
    const int profile = entry.profile.value();
    // Asked on the thread of the request, since the one that commits may be another's.
    const std::int64_t limit = platform::ProfileBytes();
    const auto put = [&](StoreConnection& connection)
    {
        RequireIn(connection, profile, refusal);
        for (const StoredConfiguration& configuration : configurations)
            PutIn(connection, profile, configuration);
        platform::RequireStorable(BytesIn(connection, profile), limit);
        if (!name.empty() || !preset.empty())
            Query(connection, kDescribe, name, preset, profile).Run();
    };
    return Audited(Role::Administrator, entry, [&] { Commit(profile, put); });
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

void ProfileStore::Require(int profile)
{
    Get([profile](StoreConnection& connection) { return RequireIn(connection, profile), true; });
}

// Whether the profile could hold that as well, at most.
void ProfileStore::RequireRoom(int profile, const StoredConfiguration& configuration)
{
    const auto others = [&](StoreConnection& connection)
    {
        RequireIn(connection, profile);
        const auto own = DocumentBytesIn(connection, profile, configuration.kind, configuration.id);
        return BytesIn(connection, profile) - own.value_or(0);
    };
    platform::RequireStorable(Get(others) + std::ssize(configuration.document), platform::ProfileBytes());
}

bool ProfileStore::Hold(AuditEntry entry, const StoredConfiguration& engine)
{
    const int profile = entry.profile.value();
    try
    {
        RequireRole(Role::Administrator);
        RequireRoom(profile, engine);
    }
    catch (const std::exception&)
    {
        platform::Audited(entry, [] { throw; });
    }
    if (engine.document.empty())
    {
        entry.result = platform::AuditResult::Refused;
        entry.reason = "The configuration is empty";
        platform::Audit(entry);
        return false;
    }
    gHeld = {this, profile, engine};
    if (platform::CurrentRequest() == 0)
        StoreHeld();
    else
        platform::AtRequestEnd(StoreHeldAtEnd);
    return true;
}

std::optional<StoredConfiguration> ProfileStore::TakeHeld(int profile)
{
    if (gHeld.store != this || gHeld.profile != profile)
        return std::nullopt;
    return std::exchange(gHeld, {}).engine;
}

void ProfileStore::StoreHeld()
{
    if (gHeld.store == nullptr)
        return;
    const HeldEngine held = std::exchange(gHeld, {});
    held.store->Put({.change = "SetEngineConfig", .profile = held.profile, .plugin = held.engine.id},
                    {held.engine});
}

void ProfileStore::StoreHeldAtEnd()
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

} // namespace analytics
