#include "files/File.h"

#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <system_error>

namespace analytics::platform
{
namespace
{
constexpr std::int64_t kNanoseconds = 1'000'000'000;
constexpr std::int64_t kCoarsestStep = 3 * kNanoseconds;

std::int64_t Nanoseconds(const timespec& time) { return time.tv_sec * kNanoseconds + time.tv_nsec; }

void Fail(FileText& file, int error)
{
    file.error = error;
    file.failure = std::generic_category().message(error);
}

void ReadAll(FileText& file, int handle)
{
    char buffer[16384];
    for (;;)
    {
        const ssize_t count = read(handle, buffer, sizeof buffer);
        if (count == 0)
            return;
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return Fail(file, errno);
        file.text.append(buffer, static_cast<std::size_t>(count));
        if (file.text.size() > kMaxFileBytes)
        {
            file.error = EFBIG;
            file.failure = "it is larger than " + std::to_string(kMaxFileBytes) + " bytes";
            return;
        }
    }
}
} // namespace

FileIdentity IdentityOf(const std::string& path)
{
    struct statx status = {};
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_INO, &status) != 0)
        return {.error = errno};
    return {0, makedev(status.stx_dev_major, status.stx_dev_minor), status.stx_ino};
}

bool IsAt(int handle, const std::string& path)
{
    struct stat status = {};
    return fstat(handle, &status) == 0 && FileIdentity(StampOf(status)) == IdentityOf(path);
}

FileStamp StampOf(const struct stat& status)
{
    FileStamp stamp;
    stamp.device = status.st_dev;
    stamp.inode = status.st_ino;
    stamp.size = status.st_size;
    stamp.modified = Nanoseconds(status.st_mtim);
    stamp.changed = Nanoseconds(status.st_ctim);
    return stamp;
}

FileStamp StampOf(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0)
        return StampOf(status);
    FileStamp stamp;
    stamp.error = errno;
    return stamp;
}

bool Settled(const FileStamp& stamp)
{
    const auto now = std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    // A time further ahead than a step is no obstacle: a change made now would be stamped otherwise.
    const auto old = [&](std::int64_t time) { return std::abs(now.count() - time) > kCoarsestStep; };
    return old(stamp.modified) && old(stamp.changed);
}

bool FileText::Missing() const { return error == ENOENT || error == ENOTDIR; }
bool FileText::Exhausted() const { return error == EMFILE || error == ENFILE || error == ENOMEM; }

FileText ReadFile(const std::string& path)
{
    FileText file;
    const FileHandle handle(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status = {};
    if (!handle || fstat(handle.Get(), &status) != 0)
    {
        Fail(file, errno);
        file.stamp = StampOf(path);
        return file;
    }
    file.stamp = StampOf(status);
    if (!S_ISREG(status.st_mode))
    {
        file.error = EINVAL;
        file.failure = "it isn't a regular file";
        return file;
    }
    ReadAll(file, handle.Get());
    if (!file.failure.empty())
        file.text.clear();
    return file;
}

bool WatchedFile::Renew(const FileStamp& now)
{
    if (m_trusted && now == m_last.stamp)
        return false;
    FileText file = ReadFile(m_path);
    m_trusted = file.Missing() || (file.failure.empty() && Settled(file.stamp));
    std::swap(file, m_last);
    const bool first = !std::exchange(m_read, true);
    return first || file.text != m_last.text || file.failure != m_last.failure;
}

} // namespace analytics::platform
