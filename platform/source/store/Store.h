#pragma once

#include "files/FileStamp.h"
#include "store/StateFolder.h"
#include "threads/Lock.h"

#include <functional>
#include <memory>
#include <string>

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
    using Operation = std::function<void(StoreConnection&)>;

    // Throws AnalyticsFault if the folder or the database can't be had.
    explicit Store(const std::string& folder);
    ~Store();

    void Read(const Operation& operation);
    // In one transaction, which is on the disk on return. What the operation throws takes it back, and so
    // does a fault, except one that says to look.
    void Write(const Operation& operation);

  private:
    using Connection = std::unique_ptr<StoreConnection>;

    // What the connections were opened on. Deleted or replaced files stay open, and what is written to
    // them is lost.
    struct Files
    {
        FileStamp database;
        FileStamp log;
        bool Same(const Files& other) const;
    };

    bool Fresh();
    void Open();
    void OpenConnections() ANALYTICS_REQUIRES(m_writerLock, m_readerLock);
    void CloseConnections() ANALYTICS_REQUIRES(m_writerLock, m_readerLock);
    Files FilesNow() const;
    Files FilesOpened();
    void SetUsable(bool usable);
    void Guarded(const std::function<void()>& action);
    [[noreturn]] void Fail(const SQLite::Exception& error, int systemError, const std::string& advice);

    const std::string m_database; // path of the file
    // Where several are taken, in this order.
    Lock m_writerLock;
    Lock m_readerLock;
    Lock m_filesLock;
    StateFolder m_folder ANALYTICS_GUARDED_BY(m_writerLock);
    Connection m_writer ANALYTICS_GUARDED_BY(m_writerLock);
    Connection m_reader ANALYTICS_GUARDED_BY(m_readerLock);
    Files m_files ANALYTICS_GUARDED_BY(m_filesLock);
    bool m_usable ANALYTICS_GUARDED_BY(m_filesLock) = false;
};

} // namespace analytics::platform
