#include "store/Store.h"

#include <analytics/Faults.h>

#include "store/StoreConnection.h"
#include "store/StoreFault.h"
#include "store/StoreRecovery.h"

#include <unistd.h>

#include <cerrno>

namespace analytics::platform
{
namespace
{
constexpr const char* kLogSuffix = "-wal";

// A commit of which nobody knows whether it has come to pass.
class Uncertain : public SQLite::Exception
{
  public:
    explicit Uncertain(const SQLite::Exception& error) : Exception(error) {}
};

// What the client is told and what is stored then must not contradict each other.
void Commit(StoreConnection& connection, SQLite::Transaction& transaction)
{
    try
    {
        transaction.commit();
    }
    catch (const SQLite::Exception& error)
    {
        const int systemError = errno;
        const bool dropped = connection.DropUnfinished();
        errno = systemError;
        if (!dropped)
            throw Uncertain(error);
        throw;
    }
}
} // namespace

Store::Store(const std::string& folder) : m_database(DatabaseIn(folder)), m_folder(folder) { Open(); }

Store::~Store()
{
    const Hold holdWriter(m_writerLock);
    const Hold holdReader(m_readerLock);
    CloseConnections();
}

bool Store::Files::Same(const Files& other) const
{
    return database.error == 0 && database.SameFile(other.database) && log.SameFile(other.log);
}

Store::Files Store::FilesNow() const { return {StampOf(m_database), StampOf(m_database + kLogSuffix)}; }

bool Store::Fresh()
{
    const Files now = FilesNow();
    const Hold hold(m_filesLock);
    return m_usable && m_files.Same(now);
}

Store::Files Store::FilesOpened()
{
    const Hold hold(m_filesLock);
    return m_files;
}

void Store::SetUsable(bool usable)
{
    const Files now = FilesNow();
    const Hold hold(m_filesLock);
    m_usable = usable;
    if (usable)
        m_files = now;
}

// Both connections are closed before one is opened: a log that one of them still holds belongs to the
// old file, and SQLite would apply it to the new one.
void Store::Open()
{
    if (Fresh())
        return;
    const Hold holdWriter(m_writerLock);
    const Hold holdReader(m_readerLock);
    if (Fresh())
        return;
    CloseConnections();
    m_folder.Take();
    FinishRecovery(m_database);
    OpenConnections();
    SetUsable(true);
}

void Store::OpenConnections()
{
    Connection writer;
    Connection reader;
    Guarded(
        [&]
        {
            writer = std::make_unique<StoreConnection>(m_database, StoreConnection::Use::kWrite);
            reader = std::make_unique<StoreConnection>(m_database, StoreConnection::Use::kRead);
        });
    m_writer = std::move(writer);
    m_reader = std::move(reader);
}

// SQLite looks after its log when it closes, but not for a file that has been moved away: then the log
// goes along into that file, and whatever log lies at the path for the next file is none of ours.
void Store::CloseConnections()
{
    SetUsable(false);
    if (!m_writer)
        return;
    const Files opened = FilesOpened();
    const Files now = FilesNow();
    const bool moved = !now.database.SameFile(opened.database);
    const bool logIsOurs = now.log.error == 0 && now.log.SameFile(opened.log);
    if (moved)
        m_writer->EmptyLog();
    for (Connection* connection : {&m_reader, &m_writer})
    {
        if (!logIsOurs)
            (*connection)->LeaveLog();
        connection->reset();
    }
    if (moved && logIsOurs)
        unlink((m_database + kLogSuffix).c_str());
}

void Store::Read(const Operation& operation)
{
    for (;;)
    {
        Open();
        const Hold hold(m_readerLock);
        StoreConnection* const reader = m_reader.get();
        if (reader != nullptr) // or another thread has just failed to open it
            return Guarded([&] { operation(*reader); });
    }
}

void Store::Write(const Operation& operation)
{
    for (;;)
    {
        Open();
        const Hold hold(m_writerLock);
        StoreConnection* const writer = m_writer.get();
        if (writer == nullptr)
            continue;
        return Guarded(
            [&]
            {
                SQLite::Transaction transaction(writer->Database(), SQLite::TransactionBehavior::IMMEDIATE);
                operation(*writer);
                Commit(*writer, transaction);
            });
    }
}

// SQLite keeps no errno for every error; what the action leaves is that of its last failed call, for
// taking the transaction back and closing succeed or come to the same.
void Store::Guarded(const std::function<void()>& action)
{
    errno = 0;
    try
    {
        action();
    }
    catch (const Uncertain& error)
    {
        Fail(error, errno, ". Whether the change was stored isn't known: look before you repeat it");
    }
    catch (const SQLite::Exception& error)
    {
        Fail(error, errno, "");
    }
}

void Store::Fail(const SQLite::Exception& error, int systemError, const std::string& advice)
{
    const std::string folder = m_database.substr(0, m_database.rfind('/'));
    const StoreFault fault = ExplainStoreFault(error.getErrorCode(), systemError, folder, error.what());
    if (fault.reopen)
        SetUsable(false);
    throw AnalyticsFault(fault.sentence + advice);
}

} // namespace analytics::platform
