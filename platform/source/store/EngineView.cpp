#include "store/EngineView.h"

#include <analytics/Faults.h>

#include "request/DocumentLimit.h"
#include "store/ProfileConfigurations.h"
#include "store/StoreConnection.h"

#include <algorithm>

namespace analytics
{
namespace
{
using platform::EngineState;
using platform::Query;
using platform::StoreConnection;

constexpr const char* kActive = "SELECT active_profile FROM state WHERE active_profile IS NOT NULL";
constexpr const char* kState = "SELECT analytics_run, md_active, sequence, profile.id, name, preset"
                               " FROM state LEFT JOIN profile ON profile.id = active_profile";
// An engine may have seen larger numbers than those of a store that was put back.
constexpr const char* kCount = "UPDATE state SET sequence = max(sequence, ?1) + 1, shown = ?2"
                               " WHERE shown IS NOT ?2 OR sequence < ?1";
constexpr const char* kIsShown = "SELECT 1 FROM state WHERE shown = ? AND sequence >= ?";

std::optional<int> ActiveIn(StoreConnection& connection)
{
    Query row(connection, kActive);
    return row.Next() ? std::optional(row.Number(0)) : std::nullopt;
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
} // namespace

EngineView::EngineView(const std::string& folder, platform::Store& store) : m_store(store)
{
    if (!folder.empty())
        m_feed.emplace(folder);
}

// The state with its number, which is counted up if an engine has not seen this state last.
EngineState EngineView::Next(StoreConnection& connection) const
{
    EngineState state = StateIn(connection);
    Query(connection, kCount, m_feed->LastSequence(), state.facts).Run();
    Query row(connection, "SELECT sequence FROM state");
    if (row.Next())
        state.sequence = row.Long(0);
    return state;
}

void EngineView::Begin()
{
    if (!m_feed)
        return;
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
            m_store.Write([&](StoreConnection& connection) { state = Next(connection); });
    }
    catch (const AnalyticsFault&)
    {
        // A store that can only be read now is shown all the same; the next change counts.
        state.sequence = std::max(state.sequence, m_feed->LastSequence());
    }
    m_feed->Show(std::move(state));
}

void EngineView::Write(std::optional<int> profile, const platform::Store::Operation& operation)
{
    if (!m_feed)
        return m_store.Write(operation);
    std::optional<EngineState> next;
    m_store.Write(
        [&](StoreConnection& connection)
        {
            next.reset(); // an operation may run again
            // A profile that was stopped a moment ago may still be in the files.
            const bool shows = !profile || ActiveIn(connection) == profile || m_feed->Profile() == *profile;
            operation(connection);
            if (shows)
                next = Next(connection);
        });
    if (next)
        m_feed->Show(std::move(*next));
}

} // namespace analytics
