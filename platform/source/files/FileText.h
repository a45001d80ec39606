#pragma once

#include "files/FileStamp.h"

#include <cstddef>
#include <string>

namespace analytics::platform
{

// What was read of a file, and the stamp that it had before the first byte was read: a change in
// between shows as another stamp.
struct FileText
{
    std::string text;
    FileStamp stamp;
    int error = 0;       // errno if it could not be read
    std::string failure; // the same as words; empty if `text` is the whole file

    bool Missing() const;
    // The process or the system is short of something just now; the file may be in order.
    bool Exhausted() const;
};

constexpr std::size_t kMaxFileBytes = 1024 * 1024;

// Reads a regular file of kMaxFileBytes at most. Never waits on a pipe or a device.
FileText ReadFile(const std::string& path);

} // namespace analytics::platform
