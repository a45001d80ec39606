#include "store/ProfileStore.h"

#include "store/ProfileStatements.h"

namespace analytics
{
namespace
{
using platform::Query;
using platform::StoreConnection;

// A left join: no row without the profile, one row with a null if the profile holds nothing.
constexpr const char* kIds = "SELECT plugin FROM profile LEFT JOIN configuration"
                             " ON profile = profile.id AND kind = ? AND active >= ?"
                             " WHERE profile.id = ? ORDER BY plugin";
constexpr const char* kDocument =
    "SELECT document FROM configuration WHERE profile = ? AND kind = ? AND plugin = ?";
constexpr const char* kConfigurations =
    "SELECT kind, plugin, document, active FROM configuration WHERE profile = ? ORDER BY kind, plugin";
constexpr const char* kPut = "INSERT INTO configuration (profile, kind, plugin, active, document)"
                             " VALUES (?, ?, ?, ?, ?) ON CONFLICT DO UPDATE"
                             " SET active = excluded.active, document = excluded.document";
constexpr const char* kAdd = "INSERT INTO configuration (profile, kind, plugin, active, document)"
                             " VALUES (?, ?, ?, ?, ?) ON CONFLICT DO NOTHING";
constexpr const char* kRemove = "DELETE FROM configuration WHERE profile = ? AND kind = ? AND plugin = ?";

int Insert(StoreConnection& connection, const char* sql, int profile, const StoredConfiguration& stored)
{
    RequireIn(connection, profile);
    const int active = stored.active ? 1 : 0;
    return Query(connection, sql, profile, static_cast<int>(stored.kind), stored.id, active, stored.document)
        .Run();
}

std::optional<std::string> Given(const std::string& text)
{
    return text.empty() ? std::nullopt : std::optional(text);
}
} // namespace

std::optional<std::vector<std::string>> ProfileStore::Ids(int profile, PluginType kind, bool onlyActive) const
{
    std::optional<std::vector<std::string>> ids;
    m_store.Read(
        [&](StoreConnection& connection)
        {
            Query row(connection, kIds, static_cast<int>(kind), onlyActive ? 1 : 0, profile);
            while (row.Next())
            {
                if (!ids)
                    ids.emplace();
                if (!row.Null(0))
                    ids->push_back(row.Text(0));
            }
        });
    return ids;
}

std::optional<std::string> ProfileStore::Document(int profile, PluginType kind, const std::string& id) const
{
    std::optional<std::string> document;
    m_store.Read(
        [&](StoreConnection& connection)
        {
            Query row(connection, kDocument, profile, static_cast<int>(kind), id);
            if (row.Next())
                document = row.Text(0);
        });
    return document;
}

std::vector<StoredConfiguration> ProfileStore::Configurations(int profile) const
{
    std::vector<StoredConfiguration> all;
    m_store.Read(
        [&](StoreConnection& connection)
        {
            Query row(connection, kConfigurations, profile);
            while (row.Next())
                all.push_back(
                    {static_cast<PluginType>(row.Number(0)), row.Text(1), row.Text(2), row.Flag(3)});
        });
    return all;
}

void ProfileStore::Put(int profile, const StoredConfiguration& configuration)
{
    m_store.Write([&](StoreConnection& connection) { Insert(connection, kPut, profile, configuration); });
}

void ProfileStore::Put(int profile, const StoredConfiguration& configuration, const std::string& name,
                       const std::string& preset)
{
    m_store.Write(
        [&](StoreConnection& connection)
        {
            Insert(connection, kPut, profile, configuration);
            DescribeIn(connection, profile, Given(name), Given(preset));
        });
}

bool ProfileStore::Add(int profile, const StoredConfiguration& configuration)
{
    int added = 0;
    m_store.Write([&](StoreConnection& connection)
                  { added = Insert(connection, kAdd, profile, configuration); });
    return added != 0;
}

bool ProfileStore::Remove(int profile, PluginType kind, const std::string& id)
{
    int removed = 0;
    m_store.Write(
        [&](StoreConnection& connection)
        {
            RequireIn(connection, profile);
            removed = Query(connection, kRemove, profile, static_cast<int>(kind), id).Run();
        });
    return removed != 0;
}

} // namespace analytics
