#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

namespace analytics::platform
{

// By what one sees that a file isn't what it was. Links are followed.
struct FileStamp
{
    int error = 0; // errno if there is no such file; all else is 0 then
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modified = 0; // nanoseconds since 1970
    std::int64_t changed = 0;  // the same, of the inode: no tool can set it back

    bool operator==(const FileStamp&) const = default;
    bool SameFile(const FileStamp& other) const
    {
        return error == other.error && device == other.device && inode == other.inode;
    }
};

FileStamp StampOf(const std::string& path);
FileStamp StampOf(const struct stat& status);

// False while the file is so young that another change of the same size could leave the same stamp:
// file systems count time in steps, of 2 seconds at the coarsest.
bool Settled(const FileStamp& stamp);

} // namespace analytics::platform
