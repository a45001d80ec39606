#pragma once

#include "files/FileStamp.h"

#include <cstddef>
#include <string>
#include <utility>

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

// A file that is read again only when it may have changed. One thread at a time.
class WatchedFile
{
  public:
    explicit WatchedFile(std::string path) : m_path(std::move(path)) {}

    // Looks at the file. True if its text, or the reason why it can't be read, is another than at the
    // last call; and at the first.
    bool Renew();
    // As it stood at the last Renew().
    const FileText& Last() const { return m_last; }
    const std::string& Path() const { return m_path; }

  private:
    const std::string m_path;
    FileText m_last;
    bool m_read = false;
    bool m_trusted = false; // an equal stamp means an equal file
};

} // namespace analytics::platform
