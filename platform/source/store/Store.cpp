#include "store/Store.h"

#include <analytics/Faults.h>

#include "metrics/Metrics.h"
#include "request/Request.h"
#include "store/StoreConnection.h"

#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>

namespace analytics::platform
{
namespace
{
constexpr const char* kLogSuffix = "-wal";

[[noreturn]] void Fail(const std::string& sentence)
{
    gStoreErrors.Add();
    throw AnalyticsFault(sentence);
}
} // namespace

Store::Store(const std::string& folder)
    : m_database(DatabaseIn(folder)), m_log(m_database + kLogSuffix), m_folder(folder)
{
    Open();
}

Store::~Store()
{
    const MutexLock holdWriter(m_writerLock);
    const MutexLock holdReader(m_readerLock);
    CloseConnections();
}

bool Store::Files::Same(const Files& other) const
{
    return database.error == 0 && database == other.database && log == other.log;
}

Store::Files Store::FilesNow() const { return {IdentityOf(m_database), IdentityOf(m_log)}; }

bool Store::Usable()
{
    const MutexLock hold(m_filesLock);
    return m_usable;
}

bool Store::Fresh()
{
    const Files now = FilesNow();
    const MutexLock hold(m_filesLock);
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
    const std::uint64_t request = CurrentRequest();
    if (request != 0 && last.request == request && last.store == this && Usable())
        return;
    Open();
    last = {this, request};
}

Store::Files Store::FilesOpened()
{
    const MutexLock hold(m_filesLock);
    return m_files;
}

void Store::SetUsable(bool usable)
{
    const Files now = FilesNow();
    const MutexLock hold(m_filesLock);
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
    const MutexLock holdWriter(m_writerLock);
    const MutexLock holdReader(m_readerLock);
    if (Fresh())
        return;
    CloseConnections();
    m_folder.Take();
    FinishReplacement(m_database);
    KeepLastCopy(m_database);
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
            writer = std::make_unique<StoreConnection>(m_database, StoreConnection::Use::Write);
            reader = std::make_unique<StoreConnection>(m_database, StoreConnection::Use::Read);
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

void Store::Read(const Operation& operation)
try
{
    for (bool read = false; !read;)
    {
        OpenForReading();
        const MutexLock hold(m_readerLock);
        StoreConnection* const reader = m_reader.get();
        read = reader != nullptr; // or another thread has just failed to open it
        if (read)
            Guarded([&] { operation(*reader); });
    }
    Report(Reading, "");
}
catch (const AnalyticsFault& fault)
{
    Report(Reading, fault.what());
    throw;
}

void Store::Write(const Operation& operation)
try
{
    CommitGroup::Member member{operation};
    const CommitGroup::Turn turn(m_group, member);
    // The end of the change comes before anybody hears of it.
    struct Change
    {
        std::atomic<std::uint64_t>& version;
        ~Change() { ++version; }
    };
    const Change change{m_version};
    if (turn.Members().size() > 1)
        WriteTogether(turn.Members());
    if (!member.failure.empty())
        Fail(member.failure);
    if (!member.committed)
        WriteAlone(operation);
    Report(Writing, "");
}
catch (const AnalyticsFault& fault)
{
    Report(Writing, fault.what());
    throw;
}

void Store::WriteAlone(const Operation& operation)
{
    for (;;)
    {
        Open();
        const MutexLock hold(m_writerLock);
        StoreConnection* const writer = m_writer.get();
        if (writer == nullptr)
            continue;
        return Guarded(
            [&]
            {
                StoreTransaction transaction(*writer);
                operation(*writer);
                transaction.Commit();
                gStoreCommits.Add();
            });
    }
}

// Whatever isn't committed here is left to its own thread, which then meets the failure itself. Except
// one of the disk at the end: the disk may yet hold what it reported as failed, so nothing is repeated.
// Where there is no room, though, there may be enough for the others.
void Store::WriteTogether(const std::vector<CommitGroup::Member*>& members)
{
    const auto failed = [&](const std::string& failure)
    {
        for (CommitGroup::Member* const member : members)
        {
            member->committed = false;
            member->failure = failure;
        }
    };
    bool within = false;
    errno = 0;
    try
    {
        Open();
        const MutexLock hold(m_writerLock);
        if (m_writer)
            CommitTogether(*m_writer, members, within);
    }
    catch (const UncertainCommit& error)
    {
        failed(SentenceOn(error));
    }
    catch (const SQLite::Exception& error)
    {
        failed(within || error.getErrorCode() == SQLITE_FULL ? "" : SentenceOn(error));
    }
    catch (const std::exception&)
    {
        failed("");
    }
}

void Store::CommitTogether(StoreConnection& writer, const std::vector<CommitGroup::Member*>& members,
                           bool& within)
{
    StoreTransaction transaction(writer);
    within = true;
    for (CommitGroup::Member* const member : members)
        if (transaction.Try(member->operation))
            member->committed = true;
    within = false;
    transaction.Commit();
    gStoreCommits.Add();
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
    catch (const SQLite::Exception& error)
    {
        Fail(SentenceOn(error));
    }
}

// Tells as well that the database has to be opened anew, if that is so.
std::string Store::SentenceOn(const SQLite::Exception& error)
{
    const StoreFault fault =
        ExplainStoreFault(error.getErrorCode(), errno, FolderOf(m_database), error.what());
    if (fault.reopen)
        SetUsable(false);
    const bool uncertain = dynamic_cast<const UncertainCommit*>(&error) != nullptr;
    return fault.sentence + (uncertain ? UncertainCommit::kAdvice : "");
}

// The operator hears when it begins and when it has ended.
void Store::Report(Way way, const std::string& failure)
{
    if (failure.empty() && !m_failing[way])
        return;
    const MutexLock hold(m_filesLock);
    m_failures[way] = failure;
    m_failing[way] = !failure.empty();
    if (!failure.empty())
        m_outage.Begin(failure);
    else if (m_failures[Reading].empty() && m_failures[Writing].empty())
        m_outage.End("The profile store in " + FolderOf(m_database) + " works again");
}

std::string Store::Failure()
{
    {
        const MutexLock hold(m_filesLock);
        if (!m_failures[Writing].empty())
            return m_failures[Writing];
    }
    try
    {
        Read([](StoreConnection& connection) { Query(connection, "SELECT one FROM state").Next(); });
    }
    catch (const AnalyticsFault& fault)
    {
        return fault.what();
    }
    if (access(m_database.c_str(), W_OK) != 0)
        return ExplainStoreFault(SQLITE_READONLY, 0, FolderOf(m_database), "").sentence;
    return "";
}

} // namespace analytics::platform
