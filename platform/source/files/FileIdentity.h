#pragma once

#include <cstdint>
#include <string>

namespace analytics::platform
{

// Which file a path leads to; links are followed. It leaves the file's times alone: after somebody has
// looked at them, some kernels give the next change a time of its own, and whoever writes and syncs the
// file then pays a second write to the disk each time.
struct FileIdentity
{
    int error = 0; // errno if there is no such file; all else is 0 then
    std::uint32_t deviceMajor = 0;
    std::uint32_t deviceMinor = 0;
    std::uint64_t inode = 0;

    bool operator==(const FileIdentity&) const = default;
};

FileIdentity IdentityOf(const std::string& path);

} // namespace analytics::platform
