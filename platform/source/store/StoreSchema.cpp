#include "store/StoreSchema.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <sqlite3.h>

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
// What the tables have to answer.
constexpr const char* kProbes[] = {
    "SELECT count(*) = 1 FROM (SELECT one, active_profile, analytics_run, md_active FROM state)",
    "SELECT count(*) >= 0 FROM (SELECT id, name, preset FROM profile LIMIT 1)",
    "SELECT count(*) >= 0 FROM (SELECT profile, kind, plugin, active, document FROM configuration LIMIT 1)",
};
constexpr int kMaxVersion = 1000; // of any service to come; more is damage
static_assert(std::size(kSteps) == kSchemaVersion);

int Version(SQLite::Database& database) { return database.execAndGet("PRAGMA user_version").getInt(); }
} // namespace

bool IsComplete(SQLite::Database& database)
{
    for (const char* probe : kProbes)
        if (database.execAndGet(probe).getInt() == 0)
            return false;
    return true;
}

bool BringUpToDate(SQLite::Database& database)
{
    if (Version(database) == kSchemaVersion)
        return true;
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    const int version = Version(database);
    if (version < 0 || version > kMaxVersion)
        throw SQLite::Exception("no version", SQLITE_CORRUPT);
    if (version > kSchemaVersion)
        return false;
    // A file that isn't empty has lost its version.
    if (version == 0 && database.execAndGet("SELECT count(*) FROM sqlite_schema").getInt() != 0)
        throw SQLite::Exception("no version", SQLITE_CORRUPT);
    for (int step = version; step < kSchemaVersion; ++step)
        database.exec(kSteps[step]);
    database.exec("PRAGMA user_version = " + std::to_string(kSchemaVersion));
    transaction.commit();
    return true;
}

} // namespace analytics::platform
