#pragma once

namespace SQLite
{
class Database;
}

namespace analytics::platform
{

constexpr int kSchemaVersion = 1;

// Brings the database to kSchemaVersion, in one transaction. False if a newer service has written it.
bool BringUpToDate(SQLite::Database& database);

} // namespace analytics::platform
