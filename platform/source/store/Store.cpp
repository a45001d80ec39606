#include "store/Store.h"

#include <analytics/Faults.h>

#include "store/StoreConnection.h"
#include "store/StoreFault.h"
#include "store/StoreTransaction.h"

#include <sqlite3.h>

#include <cerrno>

namespace analytics::platform
{
// A change that is written. Its end comes before anybody hears of it.
class Store::Change
{
  public:
    explicit Change(Store& store) : m_store(store) {}
    ~Change() { ++m_store.m_version; }
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

  private:
    Store& m_store;
};

void Store::Read(const Operation& operation)
{
    for (;;)
    {
        OpenForReading();
        const Hold hold(m_readerLock);
        StoreConnection* const reader = m_reader.get();
        if (reader != nullptr) // or another thread has just failed to open it
            return Guarded([&] { operation(*reader); });
    }
}

void Store::Write(const Operation& operation)
{
    CommitGroup::Member member{operation};
    const CommitGroup::Turn turn(m_group, member);
    const Change change(*this);
    if (turn.Members().size() > 1)
        WriteTogether(turn.Members());
    if (member.outcome == CommitGroup::Outcome::kFailed)
        Fail(member.failure);
    if (member.outcome == CommitGroup::Outcome::kAlone)
        WriteAlone(operation);
}

void Store::WriteAlone(const Operation& operation)
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
                StoreTransaction transaction(*writer);
                operation(*writer);
                transaction.Commit();
            });
    }
}

// Whatever isn't committed here is left to its own thread, which then meets the failure itself. Except
// one of the disk at the end: the disk may yet hold what it reported as failed, so nothing is repeated.
// Where there is no room, though, there may be enough for the others.
void Store::WriteTogether(const std::vector<CommitGroup::Member*>& members)
{
    using Outcome = CommitGroup::Outcome;
    const auto conclude = [&](Outcome outcome, const CommitGroup::Failure& failure)
    {
        for (CommitGroup::Member* const member : members)
        {
            member->outcome = outcome;
            member->failure = failure;
        }
    };
    bool within = false;
    errno = 0;
    try
    {
        Open();
        const Hold hold(m_writerLock);
        if (m_writer)
            CommitTogether(*m_writer, members, within);
    }
    catch (const UncertainCommit& error)
    {
        conclude(Outcome::kFailed, {error.getErrorCode(), errno, error.what(), UncertainCommit::kAdvice});
    }
    catch (const SQLite::Exception& error)
    {
        const bool repeat = within || error.getErrorCode() == SQLITE_FULL;
        conclude(repeat ? Outcome::kAlone : Outcome::kFailed,
                 {error.getErrorCode(), errno, error.what(), ""});
    }
    catch (const std::exception&)
    {
        conclude(Outcome::kAlone, {});
    }
}

void Store::CommitTogether(StoreConnection& writer, const std::vector<CommitGroup::Member*>& members,
                           bool& within)
{
    StoreTransaction transaction(writer);
    within = true;
    for (CommitGroup::Member* const member : members)
        if (transaction.Try(member->operation))
            member->outcome = CommitGroup::Outcome::kCommitted;
    within = false;
    transaction.Commit();
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
    catch (const UncertainCommit& error)
    {
        Fail({error.getErrorCode(), errno, error.what(), UncertainCommit::kAdvice});
    }
    catch (const SQLite::Exception& error)
    {
        Fail({error.getErrorCode(), errno, error.what(), ""});
    }
}

void Store::Fail(const CommitGroup::Failure& failure)
{
    const std::string folder = m_database.substr(0, m_database.rfind('/'));
    const StoreFault fault = ExplainStoreFault(failure.code, failure.systemError, folder, failure.detail);
    if (fault.reopen)
        SetUsable(false);
    throw AnalyticsFault(fault.sentence + failure.advice);
}

} // namespace analytics::platform
