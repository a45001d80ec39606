#pragma once

#include "files/File.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <utility>

namespace analytics::platform
{

// Where the profile store lies in its folder.
inline std::string DatabaseIn(const std::string& folder) { return folder + "/profiles.db"; }

inline std::string FolderOf(const std::string& file)
{
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    return folder.empty() ? "." : folder.string();
}

// The folder of the profile store, and the lock that keeps a second process out of it until this
// object goes. One thread at a time.
class StateFolder
{
  public:
    explicit StateFolder(std::string path) : m_path(std::move(path)) {}

    // Makes the folder where it is missing (mode 0700), and takes the lock. When it has been taken,
    // takes it anew if the folder isn't the same any more. Throws AnalyticsFault.
    void Take();

  private:
    std::string m_path;
    FileHandle m_lock;
};

// Copies of the profile store are made by SQLite's own backup: consistent while the store is in use, one file
// each, mode 0600, checked and on the disk before they get their name. See BackUpStore() and its like.

// Brings to its end the replacement of a database that was cut off. The caller has the lock of the folder,
// and no connection is open. Throws AnalyticsFault.
void FinishReplacement(const std::string& database);

// Where the database is missing, an empty one is to come, whose copy would take the place of the last good
// one: gives that a second name, and says it on standard error. Called as FinishReplacement() is. Throws
// AnalyticsFault if there is one that can't be kept.
void KeepLastCopy(const std::string& database);

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
