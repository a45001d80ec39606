#include "files/FileStamp.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>

namespace analytics::platform
{
namespace
{
constexpr std::int64_t kNanoseconds = 1'000'000'000;
constexpr std::int64_t kCoarsestStep = 3 * kNanoseconds;

std::int64_t Nanoseconds(const timespec& time) { return time.tv_sec * kNanoseconds + time.tv_nsec; }
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

} // namespace analytics::platform
