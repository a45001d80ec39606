#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <string>
#include <unordered_map>

namespace analytics::platform
{

// One connection to the database file, with its statements kept. One thread at a time. Errors come as
// SQLite::Exception.
class StoreConnection
{
  public:
    enum class Use
    {
        kWrite, // makes the file where it is missing, brings it up to date, tests that it is whole
        kRead   // for a file that the writer has opened
    };

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

    int Number(int column) { return m_statement.getColumn(column).getInt(); }
    bool Flag(int column) { return Number(column) != 0; }
    bool Null(int column) { return m_statement.isColumnNull(column); }
    std::string Text(int column) { return m_statement.getColumn(column).getString(); }

  private:
    void Bind(int index, int value) { m_statement.bind(index, value); }
    void Bind(int index, const std::string& value) { m_statement.bindNoCopy(index, value); }

    SQLite::Statement& m_statement;
};

} // namespace analytics::platform
