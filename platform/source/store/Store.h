#pragma once

#include "files/File.h"
#include "files/StandardError.h"
#include "store/CommitGroup.h"
#include "store/StoreFiles.h"
#include "threads/Mutex.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace SQLite
{
class Exception;
}

namespace analytics::platform
{

class StoreConnection;

// The database of the state folder: one connection that writes, and one that reads and so never waits
// for the disk of a writer. Whatever SQLite reports comes as AnalyticsFault with a sentence. When the
// database is of no use any more, or its files are others, the next operation opens it anew.
// Any thread.
class Store
{
  public:
    using Operation = CommitGroup::Operation;

    // Throws AnalyticsFault if the folder or the database can't be had.
    explicit Store(const std::string& folder);
    ~Store();

    // Within a request (RequestScope) the first reading looks whether the files are still the same; every
    // change does.
    void Read(const Operation& operation);
    // The same for what `ask` returns, a value that can be made without arguments.
    template <class Ask>
    auto Get(const Ask& ask)
    {
        decltype(ask(std::declval<StoreConnection&>())) value{};
        Read([&](StoreConnection& connection) { value = ask(connection); });
        return value;
    }
    // In one transaction, which is on the disk on return. What the operation throws takes it back, and so
    // does a fault, except one that says to look; nothing else does. Operations that come at the same time
    // may share a transaction, on a thread of any of them; an operation may run again after it was taken
    // back.
    void Write(const Operation& operation);
    // Throws AnalyticsFault if nothing could be read now. A replaced database has been noticed then.
    void Look() { OpenForReading(); }
    // Another number after each change, before it is acknowledged, and after the database was opened anew.
    // What a reading saw is what is stored for as long as the number from before it stays: in this process
    // all changes come this way.
    std::uint64_t Version() const { return m_version.load(std::memory_order_acquire); }
    // How many changes wait for the one that is being written.
    std::size_t Waiting() { return m_group.Waiting(); }
    // Why the store can't be read or written now, as a sentence; empty if it can. After a change that failed,
    // that failure until one succeeds. Waits for no change.
    std::string Failure();
    const std::string& File() const { return m_database; }

  private:
    using Connection = std::unique_ptr<StoreConnection>;

    // What the connections were opened on. Deleted or replaced files stay open, and what is written to
    // them is lost.
    struct Files
    {
        FileIdentity database;
        FileIdentity log;
        bool Same(const Files& other) const;
    };

    enum Way
    {
        Reading,
        Writing
    };

    bool Usable();
    bool Fresh();
    void Open();
    void OpenForReading();
    void WriteAlone(const Operation& operation);
    void WriteTogether(const std::vector<CommitGroup::Member*>& members);
    // `within` is true while the operations run.
    void CommitTogether(StoreConnection& writer, const std::vector<CommitGroup::Member*>& members,
                        bool& within);
    void OpenConnections() ANALYTICS_REQUIRES(m_writerLock, m_readerLock);
    void CloseConnections() ANALYTICS_REQUIRES(m_writerLock, m_readerLock);
    Files FilesNow() const;
    Files FilesOpened();
    void SetUsable(bool usable);
    void Guarded(const std::function<void()>& action);
    std::string SentenceOn(const SQLite::Exception& error);
    void Report(Way way, const std::string& failure);

    const std::string m_database; // path of the file
    const std::string m_log;
    std::atomic<std::uint64_t> m_version = 0;
    CommitGroup m_group;
    // Where several are taken, in this order.
    Mutex m_writerLock;
    Mutex m_readerLock;
    Mutex m_filesLock;
    StateFolder m_folder ANALYTICS_GUARDED_BY(m_writerLock);
    Connection m_writer ANALYTICS_GUARDED_BY(m_writerLock);
    Connection m_reader ANALYTICS_GUARDED_BY(m_readerLock);
    Files m_files ANALYTICS_GUARDED_BY(m_filesLock);
    bool m_usable ANALYTICS_GUARDED_BY(m_filesLock) = false;
    // Why what was tried last has failed, by Way; empty if it hasn't. The flags tell the same without the
    // lock.
    std::string m_failures[2] ANALYTICS_GUARDED_BY(m_filesLock);
    std::atomic<bool> m_failing[2] = {false, false};
    Outage m_outage ANALYTICS_GUARDED_BY(m_filesLock);
};

} // namespace analytics::platform
