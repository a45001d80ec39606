#pragma once

#include <atomic>
#include <chrono>
#include <string>

namespace analytics::platform
{

// Copies of the profile store are made by SQLite's own backup: consistent while the store is in use, one file
// each, mode 0600, checked and on the disk before they get their name. See BackUpStore() and its like.

// Brings to its end the replacement of a database that was cut off. The caller has the lock of the folder,
// and no connection is open. Throws AnalyticsFault.
void FinishReplacement(const std::string& database);

// Keeps the last good copy beside a database. One that can't be made is said on standard error and fails
// nothing. Any thread.
class LastGoodCopy
{
  public:
    // Before the database is opened. One that doesn't exist yet leaves an older copy alone until it changes.
    explicit LastGoodCopy(const std::string& database);

    void AfterStart(); // the database was opened and found sound
    // The first time, then at most once an hour. Other changes go on meanwhile.
    void AfterChange();

  private:
    void Make();

    const std::string m_database;
    const bool m_leaveAlone;
    std::atomic<std::chrono::steady_clock::time_point> m_next = std::chrono::steady_clock::time_point();
};

} // namespace analytics::platform
