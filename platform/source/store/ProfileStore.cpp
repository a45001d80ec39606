#include "store/ProfileStore.h"

#include "store/ProfileStatements.h"

namespace analytics
{
namespace
{
using platform::Query;
using platform::StoreConnection;

ProfileSummary SummaryOf(Query& row) { return {row.Number(0), row.Text(1), row.Text(2), row.Flag(3)}; }

constexpr const char* kList =
    "SELECT profile.id, name, preset, profile.id IS active_profile FROM profile, state ORDER BY profile.id";
constexpr const char* kFind =
    "SELECT profile.id, name, preset, profile.id IS active_profile FROM profile, state WHERE profile.id = ?";

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

const SwitchStatements& StatementsOf(ProfileSwitch which) { return kSwitches[static_cast<int>(which)]; }
} // namespace

int ProfileStore::Create(const std::string& name)
{
    int profile = 0;
    m_store.Write(
        [&](StoreConnection& connection)
        {
            Query(connection, "INSERT INTO profile (name) VALUES (?)", name).Run();
            profile = static_cast<int>(connection.Database().getLastInsertRowid());
        });
    return profile;
}

// The database's own references stop the profile and take its configurations along.
void ProfileStore::Delete(int profile)
{
    m_store.Write(
        [&](StoreConnection& connection)
        {
            RequireIn(connection, profile);
            Query(connection, "DELETE FROM profile WHERE id = ?", profile).Run();
        });
}

void ProfileStore::Activate(int profile)
{
    m_store.Write(
        [&](StoreConnection& connection)
        {
            RequireIn(connection, profile);
            Query(connection, "UPDATE state SET active_profile = ?", profile).Run();
        });
}

void ProfileStore::Deactivate(int profile)
{
    m_store.Write(
        [&](StoreConnection& connection)
        {
            RequireIn(connection, profile);
            Query(connection, "UPDATE state SET active_profile = NULL WHERE active_profile = ?", profile)
                .Run();
        });
}

void ProfileStore::DeactivateAny()
{
    m_store.Write([](StoreConnection& connection)
                  { Query(connection, "UPDATE state SET active_profile = NULL").Run(); });
}

std::optional<int> ProfileStore::Active() const
{
    return *m_active.Get(m_store,
                         [](StoreConnection& connection)
                         {
                             Query row(connection,
                                       "SELECT active_profile FROM state WHERE active_profile IS NOT NULL");
                             return row.Next() ? std::optional(row.Number(0)) : std::nullopt;
                         });
}

std::vector<ProfileSummary> ProfileStore::List() const
{
    return *m_list.Get(m_store,
                       [](StoreConnection& connection)
                       {
                           std::vector<ProfileSummary> list;
                           Query row(connection, kList);
                           while (row.Next())
                               list.push_back(SummaryOf(row));
                           return list;
                       });
}

std::optional<ProfileSummary> ProfileStore::Find(int profile) const
{
    std::optional<ProfileSummary> found;
    m_store.Read(
        [&](StoreConnection& connection)
        {
            Query row(connection, kFind, profile);
            if (row.Next())
                found = SummaryOf(row);
        });
    return found;
}

void ProfileStore::Require(int profile) const
{
    m_store.Read([profile](StoreConnection& connection) { RequireIn(connection, profile); });
}

void ProfileStore::Describe(int profile, const std::optional<std::string>& name,
                            const std::optional<std::string>& preset)
{
    m_store.Write([&](StoreConnection& connection) { DescribeIn(connection, profile, name, preset); });
}

void ProfileStore::Switch(ProfileSwitch which, bool on)
{
    m_store.Write([&](StoreConnection& connection)
                  { Query(connection, StatementsOf(which).write, on ? 1 : 0).Run(); });
}

bool ProfileStore::On(ProfileSwitch which) const
{
    return *m_switches[static_cast<int>(which)].Get(m_store,
                                                    [which](StoreConnection& connection)
                                                    {
                                                        Query row(connection, StatementsOf(which).read);
                                                        return row.Next() && row.Flag(0);
                                                    });
}

} // namespace analytics
