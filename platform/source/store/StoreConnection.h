#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>

namespace analytics::platform
{

constexpr int kSchemaVersion = 2;
constexpr int kPrimaryCode = 0xff; // the low byte of an extended code is the code that it refines

// The last good copy of a database file.
inline std::string LastCopyOf(const std::string& database) { return database + ".last"; }

// SQLite::Exception unless the database is whole and holds all that a profile store has, AnalyticsFault if a
// newer service has written it.
void RequireSound(SQLite::Database& database);

// One connection to the database file, with its statements kept. One thread at a time. Errors come as
// SQLite::Exception.
class StoreConnection
{
  public:
    enum class Use
    {
        Write, // makes the file where it is missing, brings it up to date, tests that it is whole
        Read   // writes nothing, in the log neither; a service may have the file open
    };

    // Of all connections of a process one writes, and it alone brings the log into the file.
    StoreConnection(const std::string& file, Use use);

    // A statement that is prepared the first time; `sql` is a literal. Used by one Query at a time.
    SQLite::Statement& Statement(const char* sql);

    // To be called when a commit has failed: it may stand whole in the log all the same, unseen until the
    // log is read anew. False if that could not be prevented.
    bool DropUnfinished();
    // Leaves the file at the log's path on closing, since it isn't this database's.
    void LeaveLog();
    // Brings what the log holds into the database file; what that fails on stays in the log.
    void EmptyLog();

    SQLite::Database& Database() { return m_database; }

  private:
    void Configure();
    void Prepare();
    void Verify();
    void BringLogInOnClosing(bool on);

    SQLite::Database m_database;
    std::unordered_map<const char*, SQLite::Statement> m_statements;
};

// One use of a kept statement: bind in the order of the question marks, then step through the rows.
// The texts must outlive it. Free again for the next use when this object goes.
class Query
{
  public:
    template <class... Values>
    Query(StoreConnection& connection, const char* sql, const Values&... values)
        : m_statement(connection.Statement(sql))
    {
        int index = 0;
        (Bind(++index, values), ...);
    }
    ~Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    bool Next() { return m_statement.executeStep(); }
    // Runs a statement without rows; returns how many rows it changed.
    int Run() { return m_statement.exec(); }

    std::int64_t Long(int column) { return m_statement.getColumn(column).getInt64(); }
    int Number(int column) { return m_statement.getColumn(column).getInt(); }
    bool Flag(int column) { return Number(column) != 0; }
    bool IsNull(int column) { return m_statement.isColumnNull(column); }
    std::string Text(int column) { return m_statement.getColumn(column).getString(); }

  private:
    void Bind(int index, std::int64_t value) { m_statement.bind(index, value); }
    void Bind(int index, int value) { m_statement.bind(index, value); }
    void Bind(int index, std::optional<int> value)
    {
        if (value)
            m_statement.bind(index, *value);
        else
            m_statement.bind(index);
    }
    void Bind(int index, const std::string& value) { m_statement.bindNoCopy(index, value); }

    SQLite::Statement& m_statement;
};

// A commit of which nobody knows whether it has come to pass.
class UncertainCommit : public SQLite::Exception
{
  public:
    static constexpr char kAdvice[] =
        ". Whether the change was stored isn't known: look before you repeat it";

    explicit UncertainCommit(const SQLite::Exception& error) : Exception(error) {}
};

// A transaction that writes, from its begin to Commit(); without that it is taken back. Errors come as
// SQLite::Exception.
class StoreTransaction
{
  public:
    explicit StoreTransaction(StoreConnection& connection);
    ~StoreTransaction();
    StoreTransaction(const StoreTransaction&) = delete;
    StoreTransaction& operator=(const StoreTransaction&) = delete;

    // Runs a part that can be taken back by itself. False if it threw anything but SQLite::Exception, and
    // has been taken back.
    bool Try(const std::function<void(StoreConnection&)>& part);
    // On the disk on return. If it fails, nothing of it will ever be there, unless it throws UncertainCommit.
    void Commit();

  private:
    void Run(const char* sql) { Query(m_connection, sql).Run(); }

    StoreConnection& m_connection;
    bool m_open = true;
};

// What a failure of SQLite means to people and to the store.
struct StoreFault
{
    std::string sentence;
    bool reopen; // the connection is of no use any more
};

// `code` is SQLite's, extended; `systemError` the errno behind it, 0 if there is none; `folder` the
// state folder; `detail` SQLite's own words, for what has no better ones here.
StoreFault ExplainStoreFault(int code, int systemError, const std::string& folder, const std::string& detail);

} // namespace analytics::platform
