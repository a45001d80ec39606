#include "store/StoreTransaction.h"

#include <sqlite3.h>

#include <cerrno>

namespace analytics::platform
{

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
