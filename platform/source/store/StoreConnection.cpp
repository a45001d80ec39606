#include "store/StoreConnection.h"

#include <analytics/Faults.h>

#include "store/StoreSchema.h"

#include <sqlite3.h>

namespace analytics::platform
{
namespace
{
constexpr int kBusyMilliseconds = 5000;
constexpr int kOpen = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;

int Flags(StoreConnection::Use use)
{
    return use == StoreConnection::Use::kWrite ? kOpen | SQLITE_OPEN_CREATE : kOpen;
}
} // namespace

StoreConnection::StoreConnection(const std::string& file, Use use)
    : m_database(file, Flags(use), kBusyMilliseconds)
{
    // SQLite opens a file that it may not write for reading only, and says nothing. The next statement
    // would give the log the same mode, which it would keep when the file is writable again.
    if (sqlite3_db_readonly(m_database.getHandle(), "main") == 1)
        throw SQLite::Exception("read-only", SQLITE_READONLY);
    sqlite3_extended_result_codes(m_database.getHandle(), 1);
    // FULL: a commit is on the disk when it returns. The log is cut back to a size that stays small.
    m_database.exec(
        "PRAGMA foreign_keys = ON; PRAGMA synchronous = FULL; PRAGMA journal_size_limit = 4194304");
    if (use == Use::kWrite)
        Verify();
    else
        m_database.exec("PRAGMA query_only = ON");
}

void StoreConnection::Verify()
{
    m_database.exec("PRAGMA journal_mode = WAL");
    if (m_database.execAndGet("PRAGMA quick_check(1)").getString() != "ok")
        throw SQLite::Exception("damaged", SQLITE_CORRUPT);
    if (!BringUpToDate(m_database))
        throw AnalyticsFault(
            "The profile store " + m_database.getFilename() +
            " was written by a newer version of this service; run that version, or choose another "
            "state folder");
}

SQLite::Statement& StoreConnection::Statement(const char* sql)
{
    const auto found = m_statements.find(sql);
    if (found != m_statements.end())
        return found->second;
    return m_statements.emplace(sql, SQLite::Statement(m_database, sql)).first->second;
}

void StoreConnection::LeaveLog()
{
    int on = 1;
    sqlite3_file_control(m_database.getHandle(), "main", SQLITE_FCNTL_PERSIST_WAL, &on);
}

void StoreConnection::EmptyLog() { m_database.tryExec("PRAGMA wal_checkpoint(TRUNCATE)"); }

Query::~Query() { m_statement.tryReset(); }

} // namespace analytics::platform
