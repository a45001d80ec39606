#include "store/StoreSchema.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <iterator>
#include <string>

namespace analytics::platform
{
namespace
{
// Row N leads from version N to version N + 1. A row that was delivered never changes.
constexpr const char* kSteps[] = {
    // AUTOINCREMENT: the identifier of a deleted profile is never given again. Identifiers are C++
    // ints. `kind` is a PluginType. There is one row of state.
    R"(
CREATE TABLE profile (
    id INTEGER PRIMARY KEY AUTOINCREMENT CHECK (id BETWEEN 1 AND 2147483647),
    name TEXT NOT NULL,
    preset TEXT NOT NULL DEFAULT ''
) STRICT;
CREATE TABLE configuration (
    profile INTEGER NOT NULL REFERENCES profile (id) ON DELETE CASCADE,
    kind INTEGER NOT NULL,
    plugin TEXT NOT NULL,
    active INTEGER NOT NULL,
    document TEXT NOT NULL,
    PRIMARY KEY (profile, kind, plugin)
) STRICT;
CREATE TABLE state (
    one INTEGER PRIMARY KEY CHECK (one = 1),
    active_profile INTEGER REFERENCES profile (id) ON DELETE SET NULL,
    analytics_run INTEGER NOT NULL,
    md_active INTEGER NOT NULL
) STRICT;
INSERT INTO state VALUES (1, NULL, 1, 0);
)",
};
static_assert(std::size(kSteps) == kSchemaVersion);

int Version(SQLite::Database& database) { return database.execAndGet("PRAGMA user_version").getInt(); }
} // namespace

bool BringUpToDate(SQLite::Database& database)
{
    if (Version(database) == kSchemaVersion)
        return true;
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    const int version = Version(database);
    if (version > kSchemaVersion || version < 0)
        return false;
    for (int step = version; step < kSchemaVersion; ++step)
        database.exec(kSteps[step]);
    database.exec("PRAGMA user_version = " + std::to_string(kSchemaVersion));
    transaction.commit();
    return true;
}

} // namespace analytics::platform
