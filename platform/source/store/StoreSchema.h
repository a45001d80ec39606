#pragma once

namespace SQLite
{
class Database;
}

namespace analytics::platform
{

constexpr int kSchemaVersion = 1;

// Whether the database holds all that this version has. SQLite::Exception if a table is missing.
bool IsComplete(SQLite::Database& database);

// Brings the database to kSchemaVersion, in one transaction. False if a newer service has written it.
// SQLite::Exception with SQLITE_CORRUPT if its version is none.
bool BringUpToDate(SQLite::Database& database);

} // namespace analytics::platform
