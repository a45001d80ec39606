#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace analytics::platform
{

// Owns a file descriptor; -1 stands for none.
class FileHandle
{
  public:
    FileHandle() = default;
    explicit FileHandle(int handle) : m_handle(handle) {}
    FileHandle(FileHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, -1)) {}
    FileHandle& operator=(FileHandle&& other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~FileHandle()
    {
        if (m_handle >= 0)
            close(m_handle);
    }

    int Get() const { return m_handle; }
    explicit operator bool() const { return m_handle >= 0; }

  private:
    int m_handle = -1;
};

// Which file a path leads to; links are followed.
struct FileIdentity
{
    int error = 0; // errno if there is no such file; all else is 0 then
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    bool operator==(const FileIdentity&) const = default;
};

// Doesn't ask for the file's times: once they were asked for, some kernels give the next change a time of its
// own, and each sync of a file that is being written costs a second write to the disk.
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

    // Looks at the file, unless it has the stamp that was seen `now`. True if its text, or the reason why it
    // can't be read, is another than at the last call; and at the first.
    bool Renew() { return Renew(StampOf(m_path)); }
    bool Renew(const FileStamp& now);
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
