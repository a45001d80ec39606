// Which files a store has open, and when it opens them anew.

#include "store/Store.h"

#include "store/StoreConnection.h"
#include "store/StoreRecovery.h"
#include "threads/OncePerRequest.h"

#include <unistd.h>

namespace analytics::platform
{
namespace
{
constexpr const char* kLogSuffix = "-wal";
} // namespace

Store::Store(const std::string& folder)
    : m_database(DatabaseIn(folder)), m_log(m_database + kLogSuffix), m_folder(folder)
{
    Open();
}

Store::~Store()
{
    const Hold holdWriter(m_writerLock);
    const Hold holdReader(m_readerLock);
    CloseConnections();
}

bool Store::Files::Same(const Files& other) const
{
    return database.error == 0 && database == other.database && log == other.log;
}

Store::Files Store::FilesNow() const { return {IdentityOf(m_database), IdentityOf(m_log)}; }

bool Store::Usable()
{
    const Hold hold(m_filesLock);
    return m_usable;
}

bool Store::Fresh()
{
    const Files now = FilesNow();
    const Hold hold(m_filesLock);
    return m_usable && m_files.Same(now);
}

// A request that has seen the files, and reads again within microseconds, doesn't look again.
void Store::OpenForReading()
{
    struct Look
    {
        const Store* store = nullptr;
        std::uint64_t request = 0;
    };
    thread_local Look last;
    const std::uint64_t request = RequestOfThread();
    if (request != 0 && last.request == request && last.store == this && Usable())
        return;
    Open();
    last = {this, request};
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
    ++m_version;
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
    const bool moved = now.database != opened.database;
    const bool logIsOurs = now.log.error == 0 && now.log == opened.log;
    if (moved)
        m_writer->EmptyLog();
    for (Connection* connection : {&m_reader, &m_writer})
    {
        if (!logIsOurs)
            (*connection)->LeaveLog();
        connection->reset();
    }
    if (moved && logIsOurs)
        unlink(m_log.c_str());
}

} // namespace analytics::platform
