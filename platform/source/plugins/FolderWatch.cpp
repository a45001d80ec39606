#include "plugins/FolderWatch.h"

#include <linux/magic.h>
#include <sys/inotify.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <filesystem>

namespace analytics::platform
{
namespace
{
constexpr std::uint32_t kEvents = IN_ATTRIB | IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_DELETE_SELF |
                                  IN_MODIFY | IN_MOVE_SELF | IN_MOVED_FROM | IN_MOVED_TO;

// Changes made elsewhere raise no event on these: AFS, CIFS, Coda, FUSE, NFS, SMB, SMB2, 9P.
constexpr std::array<std::uint32_t, 8> kRemote = {AFS_SUPER_MAGIC, 0xff534d42,      CODA_SUPER_MAGIC,
                                                  0x65735546,      NFS_SUPER_MAGIC, SMB_SUPER_MAGIC,
                                                  0xfe534d42,      V9FS_MAGIC};

bool Remote(const std::string& path)
{
    struct statfs status = {};
    return statfs(path.c_str(), &status) == 0 &&
           std::ranges::find(kRemote, static_cast<std::uint32_t>(status.f_type)) != kRemote.end();
}

bool IsLink(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_symlink(path, error);
}
} // namespace

FolderWatch::FolderWatch(bool byStamps) : m_events(byStamps ? -1 : inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

bool FolderWatch::Watch(const std::string& path)
{
    return m_events && !Remote(path) && inotify_add_watch(m_events.Get(), path.c_str(), kEvents) >= 0;
}

void FolderWatch::Compare(const std::string& path, bool watched)
{
    m_places.push_back({path, StampOf(path), watched});
    const FileStamp& stamp = m_places.back().stamp;
    m_young = m_young || (!watched && stamp.error == 0 && !Settled(stamp));
}

void FolderWatch::AddRoot(const std::string& path) { Compare(path, Watch(path)); }

void FolderWatch::AddFolder(const std::string& path, std::span<const char* const> files)
{
    const bool watched = Watch(path);
    if (!watched || IsLink(path))
        Compare(path, watched);
    for (const char* name : files)
    {
        const std::string file = path + '/' + name;
        if (!watched || IsLink(file))
            Compare(file, Watch(file));
    }
}

bool FolderWatch::Changed()
{
    // Which event doesn't matter, not even that there were too many to keep.
    alignas(inotify_event) char buffer[4096];
    if (m_events && (read(m_events.Get(), buffer, sizeof buffer) >= 0 || errno != EAGAIN))
        return true;
    return m_young || std::ranges::any_of(m_places,
                                          [](const Place& place)
                                          {
                                              const FileStamp now = StampOf(place.path);
                                              return place.watched
                                                         ? FileIdentity(now) != FileIdentity(place.stamp)
                                                         : now != place.stamp;
                                          });
}

} // namespace analytics::platform
