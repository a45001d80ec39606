#include "files/FileIdentity.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace analytics::platform
{

FileIdentity IdentityOf(const std::string& path)
{
    struct statx status = {};
    FileIdentity identity;
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_INO, &status) != 0)
    {
        identity.error = errno;
        return identity;
    }
    identity.deviceMajor = status.stx_dev_major;
    identity.deviceMinor = status.stx_dev_minor;
    identity.inode = status.stx_ino;
    return identity;
}

} // namespace analytics::platform
