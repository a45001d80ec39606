#pragma once

#include "files/FileHandle.h"
#include "files/FileStamp.h"

#include <span>
#include <string>
#include <vector>

namespace analytics::platform
{

// Tells whether something has changed in a set of folders since they were added. The kernel tells, at
// the cost of one read per question. What it can't tell is compared by stamps: where a path leads that
// runs through a link, folders on a network, everything if the kernel grants no watch.
//
// After a change it has served: a new one is made, the folders are added, and only then read, so that
// nothing falls between. One thread at a time.
class FolderWatch
{
  public:
    // `byStamps`: don't ask the kernel.
    explicit FolderWatch(bool byStamps = false);

    // The folder's entries, what they hold, and whether `path` still leads to this folder.
    void AddRoot(const std::string& path);
    // The same for a folder below; of the entries that are links, those named in `files`.
    void AddFolder(const std::string& path, std::span<const char* const> files);

    bool Changed();

  private:
    struct Place
    {
        std::string path;
        FileStamp stamp;
        bool watched; // only whether the path leads to the same file is to be compared
    };

    bool Watch(const std::string& path);
    void Compare(const std::string& path, bool watched);

    FileHandle m_events;
    std::vector<Place> m_places;
    bool m_young = false; // a compared stamp can't be told from that of a change right after it
};

} // namespace analytics::platform
