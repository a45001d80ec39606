#include "store/StoreConnection.h"

#include <analytics/Faults.h>

#include "files/FileStamp.h"
#include "store/StoreSchema.h"

#include <sqlite3.h>

namespace analytics::platform
{
namespace
{
constexpr int kBusyMilliseconds = 5000;
constexpr int kPrimaryCode = 0xff; // without what refines it
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
    if (use == Use::kWrite)
        Prepare();
    else
    {
        Configure();
        m_database.exec("PRAGMA query_only = ON");
    }
}

void StoreConnection::Configure()
{
    // FULL: a commit is on the disk when it returns. The log is cut back to a size that stays small.
    // What is deleted is overwritten: a recovery that looks at single pages must not find it.
    m_database.exec("PRAGMA foreign_keys = ON; PRAGMA synchronous = FULL;"
                    "PRAGMA journal_size_limit = 4194304; PRAGMA secure_delete = ON");
}

// A damaged file stays as it was found: nothing is written to it before it is known to be whole.
void StoreConnection::Prepare()
{
    // SQLite throws the log of an empty file away. No file is empty once it has had a log.
    const std::string& file = m_database.getFilename();
    if (StampOf(file).size == 0 && StampOf(file + "-wal").size > 0)
        throw SQLite::Exception("its log is all there is", SQLITE_CORRUPT);
    BringLogInOnClosing(false);
    try
    {
        Configure();
        Verify();
    }
    catch (const SQLite::Exception& error)
    {
        // A table, a column or a format that isn't known.
        if ((error.getErrorCode() & kPrimaryCode) == SQLITE_ERROR)
            throw SQLite::Exception(error.what(), SQLITE_CORRUPT);
        throw;
    }
    BringLogInOnClosing(true);
}

void StoreConnection::Verify()
{
    if (m_database.execAndGet("PRAGMA quick_check(1)").getString() != "ok")
        throw SQLite::Exception("damaged", SQLITE_CORRUPT);
    m_database.exec("PRAGMA journal_mode = WAL");
    if (!BringUpToDate(m_database))
        throw AnalyticsFault(
            "The profile store " + m_database.getFilename() +
            " was written by a newer version of this service; run that version, or choose another "
            "state folder");
    if (!IsComplete(m_database))
        throw SQLite::Exception("incomplete", SQLITE_CORRUPT);
}

void StoreConnection::BringLogInOnClosing(bool on)
{
    sqlite3_db_config(m_database.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, on ? 0 : 1, nullptr);
}

// The next transaction is written over it. This one writes a page and changes nothing.
bool StoreConnection::DropUnfinished()
{
    static const std::string kTransaction =
        "BEGIN IMMEDIATE; PRAGMA user_version = " + std::to_string(kSchemaVersion) + "; COMMIT";
    if (m_database.tryExec(kTransaction) == SQLITE_OK)
        return true;
    m_database.tryExec("ROLLBACK");
    return false;
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
