#pragma once

#include "files/FileHandle.h"

#include <string>

namespace analytics::platform
{

// Where the profile store lies in its folder.
inline std::string DatabaseIn(const std::string& folder) { return folder + "/profiles.db"; }

inline std::string FolderOf(const std::string& file) { return file.substr(0, file.rfind('/')); }

// Files that were made or renamed in it are so after a power cut only once the folder is on the disk.
void SyncFolder(const std::string& folder);

// Gives a file to the owner of its folder, where this process may: an administrator's command must leave
// nothing that the service can't open.
void GiveToOwner(const std::string& file);

// The folder of the profile store, and the lock that keeps a second process out of it until this
// object goes. One thread at a time.
class StateFolder
{
  public:
    explicit StateFolder(std::string path) : m_path(std::move(path)) {}

    // Makes the folder where it is missing (mode 0700), and takes the lock. When it has been taken,
    // takes it anew if the folder isn't the same any more. Throws AnalyticsFault.
    void Take();

    const std::string& Path() const { return m_path; }

  private:
    std::string m_path;
    FileHandle m_lock;
};

} // namespace analytics::platform
