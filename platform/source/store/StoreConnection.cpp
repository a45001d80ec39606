#include "store/StoreConnection.h"

#include <analytics/Faults.h>

#include "files/File.h"

#include <sqlite3.h>

#include <array>
#include <cerrno>
#include <iterator>
#include <system_error>

namespace analytics::platform
{
namespace
{
constexpr int kBusyMilliseconds = 5000;
// Each connection would take memory for 20 pages at once, some 90 KiB, of which ours fill a few. It counts
// for the whole process, and only if it is said before the first connection.
[[maybe_unused]] const int gPagesAsNeeded = sqlite3_config(SQLITE_CONFIG_PAGECACHE, nullptr, 0, 0);
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
    // What the analytics engine was shown last, and how many times it has been shown something else.
    R"(
ALTER TABLE state ADD COLUMN sequence INTEGER NOT NULL DEFAULT 0;
ALTER TABLE state ADD COLUMN shown TEXT NOT NULL DEFAULT '';
)",
};
// What the tables have to answer.
constexpr const char* kProbes[] = {
    ("SELECT count(*) = 1 FROM"
     " (SELECT one, active_profile, analytics_run, md_active, sequence, shown FROM state)"),
    "SELECT count(*) >= 0 FROM (SELECT id, name, preset FROM profile LIMIT 1)",
    "SELECT count(*) >= 0 FROM (SELECT profile, kind, plugin, active, document FROM configuration LIMIT 1)",
};
constexpr int kMaxVersion = 1000; // of any service to come; more is damage
static_assert(std::size(kSteps) == kSchemaVersion);

int Flags(StoreConnection::Use use)
{
    const int open = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    return use == StoreConnection::Use::Write ? open | SQLITE_OPEN_CREATE : open;
}

// No file is empty once it has had a log, which SQLite would throw away, or a copy of it was made.
const std::string& RequireNotEmptied(const std::string& file)
{
    const FileStamp stamp = StampOf(file);
    if (stamp.size == 0 &&
        (StampOf(file + "-wal").size > 0 || (stamp.error == 0 && StampOf(LastCopyOf(file)).size > 0)))
        throw SQLite::Exception("nothing is left of it", SQLITE_CORRUPT);
    return file;
}

void RequireWhole(SQLite::Database& database)
{
    if (database.execAndGet("PRAGMA integrity_check(1)").getString() != "ok")
        throw SQLite::Exception("damaged", SQLITE_CORRUPT);
}

void RequireComplete(SQLite::Database& database)
{
    for (const char* probe : kProbes)
        if (database.execAndGet(probe).getInt() == 0)
            throw SQLite::Exception("incomplete", SQLITE_CORRUPT);
}

// The version of the store, in the bounds that this service knows.
int KnownVersion(SQLite::Database& database)
{
    const int version = database.execAndGet("PRAGMA user_version").getInt();
    if (version < 0 || version > kMaxVersion)
        throw SQLite::Exception("no version", SQLITE_CORRUPT);
    if (version > kSchemaVersion)
        throw AnalyticsFault("The profile store " + database.getFilename() +
                             " was written by a newer version of this service; run that version, or choose "
                             "another state folder");
    return version;
}

void BringUpToDate(SQLite::Database& database)
{
    if (KnownVersion(database) == kSchemaVersion)
        return;
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    const int version = KnownVersion(database);
    // A file that isn't empty has lost its version.
    if (version == 0 && database.execAndGet("SELECT count(*) FROM sqlite_schema").getInt() != 0)
        throw SQLite::Exception("no version", SQLITE_CORRUPT);
    for (int step = version; step < kSchemaVersion; ++step)
        database.exec(kSteps[step]);
    database.exec("PRAGMA user_version = " + std::to_string(kSchemaVersion));
    transaction.commit();
}

struct Row
{
    int code;
    bool reopen;
    bool systemReason; // errno says more than the code
    const char* text;
};
constexpr const char* kDamaged = "it is damaged; restore a backup with --restore, or start the service with "
                                 "--recover, which puts the last "
                                 "good copy in its place and keeps the damaged files";
constexpr const char* kLocked = "another program holds it locked; end that program and try again";
// The first row with the extended code counts, then the first with the primary one.
constexpr Row kRows[] = {
    {SQLITE_FULL, false, false, "the disk is full; free some space on it and try again"},
    {SQLITE_READONLY, true, false,
     "it is read-only; make the folder and its files writable for the service and try again"},
    {SQLITE_CORRUPT, true, false, kDamaged},
    {SQLITE_NOTADB, true, false, kDamaged},
    {SQLITE_CANTOPEN, true, true,
     "its file can't be opened; check that the folder exists and the service may write in it"},
    {SQLITE_IOERR_NOMEM, true, false, "the memory is exhausted; try again later"},
    {SQLITE_IOERR, true, true, "the disk doesn't read or write; check the disk and try again"},
    {SQLITE_BUSY, false, false, kLocked},
    {SQLITE_LOCKED, false, false, kLocked},
    {SQLITE_PROTOCOL, true, false, kLocked},
    {SQLITE_NOMEM, false, false, "the memory is exhausted; try again later"},
    {SQLITE_PERM, true, false,
     "access to it is denied; make the folder and its files writable for the service and try again"},
    {SQLITE_TOOBIG, false, false, "the text is larger than it can take; send a smaller one"},
    {SQLITE_CONSTRAINT, false, false, "the identifiers are used up; begin with an empty state folder"},
};
constexpr Row kOther = {0, true, false,
                        "an unforeseen error; try again, and restart the service if it stays"};

// However SQLite calls them, these say that there is no room to write.
constexpr std::array kNoRoom = {ENOSPC, EDQUOT, EFBIG};

const Row& RowOf(int code, int systemError)
{
    if ((code & kPrimaryCode) == SQLITE_IOERR)
        for (const int error : kNoRoom)
            if (error == systemError)
                return RowOf(SQLITE_FULL, 0);
    for (const int wanted : {code, code & kPrimaryCode})
        for (const Row& row : kRows)
            if (row.code == wanted)
                return row;
    return kOther;
}
} // namespace

StoreFault ExplainStoreFault(int code, int systemError, const std::string& folder, const std::string& detail)
{
    const Row& row = RowOf(code, systemError);
    // After an I/O error the connection is not to be trusted, whatever was behind it.
    const bool reopen = row.reopen || (code & kPrimaryCode) == SQLITE_IOERR;
    std::string reason = row.text;
    if (row.systemReason && systemError != 0)
        reason += " (" + std::generic_category().message(systemError) + ")";
    else if (&row == &kOther)
        reason += " (" + detail + ")";
    return {"The profile store in " + folder + " failed: " + reason, reopen};
}

StoreConnection::StoreConnection(const std::string& file, Use use)
    : m_database(RequireNotEmptied(file), Flags(use), kBusyMilliseconds)
{
    // SQLite opens a file that it may not write for reading only, and says nothing. The next statement
    // would give the log the same mode, which it would keep when the file is writable again.
    if (sqlite3_db_readonly(m_database.getHandle(), "main") == 1)
        throw SQLite::Exception("read-only", SQLITE_READONLY);
    sqlite3_extended_result_codes(m_database.getHandle(), 1);
    if (use == Use::Write)
    {
        Prepare();
        return;
    }
    // While one connection begins the log anew and another brings it in, SQLite 3.7.0 to 3.51.2 can lose
    // pages that were committed: the one that writes does both.
    Configure();
    m_database.exec("PRAGMA query_only = ON; PRAGMA wal_autocheckpoint = 0");
    BringLogInOnClosing(false);
}

void StoreConnection::Configure()
{
    // FULL: a commit is on the disk when it returns. The log is cut back to a size that stays small.
    m_database.exec(
        "PRAGMA foreign_keys = ON; PRAGMA synchronous = FULL; PRAGMA journal_size_limit = 4194304");
}

void RequireSound(SQLite::Database& database)
{
    RequireWhole(database);
    if (KnownVersion(database) == 0)
        throw SQLite::Exception("no version", SQLITE_CORRUPT);
    RequireComplete(database);
}

// A damaged file stays as it was found: nothing is written to it before it is known to be whole.
void StoreConnection::Prepare()
{
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
    RequireWhole(m_database);
    m_database.exec("PRAGMA journal_mode = WAL");
    BringUpToDate(m_database);
    RequireComplete(m_database);
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

StoreTransaction::StoreTransaction(StoreConnection& connection) : m_connection(connection)
{
    Run("BEGIN IMMEDIATE");
}

// SQLite has taken back by itself what failed in some ways.
StoreTransaction::~StoreTransaction()
{
    if (m_open && sqlite3_get_autocommit(m_connection.Database().getHandle()) == 0)
        m_connection.Database().tryExec("ROLLBACK");
}

bool StoreTransaction::Try(const std::function<void(StoreConnection&)>& part)
{
    Run("SAVEPOINT part");
    bool done = false;
    try
    {
        part(m_connection);
        done = true;
    }
    catch (const SQLite::Exception&)
    {
        throw;
    }
    catch (...)
    {
        Run("ROLLBACK TO part");
    }
    Run("RELEASE part");
    return done;
}

void StoreTransaction::Commit()
{
    try
    {
        Run("COMMIT");
        m_open = false;
    }
    catch (const SQLite::Exception& error)
    {
        // What the client is told and what is stored then must not contradict each other.
        const int systemError = errno;
        const bool dropped = m_connection.DropUnfinished();
        errno = systemError;
        if (!dropped)
            throw UncertainCommit(error);
        throw;
    }
}

} // namespace analytics::platform
