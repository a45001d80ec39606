#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

namespace analytics::platform
{

// Which file a path leads to; links are followed.
struct FileIdentity
{
    int error = 0; // errno if there is no such file; all else is 0 then
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    bool operator==(const FileIdentity&) const = default;
};

// Leaves the file's times alone: after somebody has looked at them, some kernels give the next change a time
// of its own, and whoever writes and syncs the file then pays a second write to the disk each time.
FileIdentity IdentityOf(const std::string& path);

// By what one sees that a file isn't what it was. Links are followed.
struct FileStamp : FileIdentity
{
    std::int64_t size = 0;
    std::int64_t modified = 0; // nanoseconds since 1970
    std::int64_t changed = 0;  // the same, of the inode: no tool can set it back

    bool operator==(const FileStamp&) const = default;
};

FileStamp StampOf(const std::string& path);
FileStamp StampOf(const struct stat& status);

// Whether the open file `handle` is the one that the path leads to. False for -1.
bool IsAt(int handle, const std::string& path);

// False while the file is so young that another change of the same size could leave the same stamp:
// file systems count time in steps, of 2 seconds at the coarsest.
bool Settled(const FileStamp& stamp);

} // namespace analytics::platform
