#include "store/ProfileConfigurations.h"

#include <analytics/Faults.h>

#include "store/StoreConnection.h"

namespace analytics
{
namespace
{
using platform::Query;
using platform::StoreConnection;

int Insert(StoreConnection& connection, const char* sql, int profile, const StoredConfiguration& stored)
{
    return Query(connection, sql, profile, static_cast<int>(stored.kind), stored.id, stored.active ? 1 : 0,
                 stored.document)
        .Run();
}
} // namespace

void RequireIn(StoreConnection& connection, int profile, const std::string& refusal)
{
    if (!Query(connection, "SELECT 1 FROM profile WHERE id = ?", profile).Next())
        throw ClientFault("Profile " + std::to_string(profile) + " does not exist");
    if (!refusal.empty())
        throw ClientFault(refusal);
}

std::optional<int> ActiveIn(StoreConnection& connection)
{
    Query row(connection, "SELECT active_profile FROM state WHERE active_profile IS NOT NULL");
    return row.Next() ? std::optional(row.Number(0)) : std::nullopt;
}

void PutIn(StoreConnection& connection, int profile, const StoredConfiguration& stored)
{
    Insert(connection,
           "INSERT INTO configuration (profile, kind, plugin, active, document)"
           " VALUES (?, ?, ?, ?, ?) ON CONFLICT DO UPDATE"
           " SET active = excluded.active, document = excluded.document",
           profile, stored);
}

bool AddIn(StoreConnection& connection, int profile, const StoredConfiguration& stored)
{
    return Insert(connection,
                  "INSERT INTO configuration (profile, kind, plugin, active, document)"
                  " VALUES (?, ?, ?, ?, ?) ON CONFLICT DO NOTHING",
                  profile, stored) != 0;
}

bool DeleteIn(StoreConnection& connection, int profile, PluginType kind, const std::string& id)
{
    return Query(connection, "DELETE FROM configuration WHERE profile = ? AND kind = ? AND plugin = ?",
                 profile, static_cast<int>(kind), id)
               .Run() != 0;
}

std::optional<std::vector<std::string>> IdsIn(StoreConnection& connection, int profile, PluginType kind,
                                              bool onlyActive)
{
    std::optional<std::vector<std::string>> ids;
    // A left join: no row without the profile, one row with a null if the profile holds nothing.
    Query row(connection,
              "SELECT plugin FROM profile LEFT JOIN configuration"
              " ON profile = profile.id AND kind = ? AND active >= ?"
              " WHERE profile.id = ? ORDER BY plugin",
              static_cast<int>(kind), onlyActive ? 1 : 0, profile);
    while (row.Next())
    {
        if (!ids)
            ids.emplace();
        if (!row.IsNull(0))
            ids->push_back(row.Text(0));
    }
    return ids;
}

std::vector<StoredConfiguration> ConfigurationsIn(StoreConnection& connection, int profile)
{
    std::vector<StoredConfiguration> all;
    Query row(connection,
              "SELECT kind, plugin, document, active FROM configuration"
              " WHERE profile = ? ORDER BY kind, plugin",
              profile);
    while (row.Next())
        all.push_back({static_cast<PluginType>(row.Number(0)), row.Text(1), row.Text(2), row.Flag(3)});
    return all;
}

std::int64_t BytesIn(StoreConnection& connection, int profile)
{
    Query row(connection,
              "SELECT coalesce(sum(length(CAST(document AS BLOB))), 0) FROM configuration WHERE profile = ?",
              profile);
    return row.Next() ? row.Long(0) : 0;
}

std::optional<std::string> DocumentIn(StoreConnection& connection, int profile, PluginType kind,
                                      const std::string& id)
{
    Query row(connection, "SELECT document FROM configuration WHERE profile = ? AND kind = ? AND plugin = ?",
              profile, static_cast<int>(kind), id);
    return row.Next() ? std::optional(row.Text(0)) : std::nullopt;
}

std::optional<std::int64_t> DocumentBytesIn(StoreConnection& connection, int profile, PluginType kind,
                                            const std::string& id)
{
    Query row(connection,
              "SELECT length(CAST(document AS BLOB)) FROM configuration"
              " WHERE profile = ? AND kind = ? AND plugin = ?",
              profile, static_cast<int>(kind), id);
    return row.Next() ? std::optional(row.Long(0)) : std::nullopt;
}

} // namespace analytics
