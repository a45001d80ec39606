#include "store/StateFolder.h"

#include <analytics/Faults.h>

#include "files/FileText.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace analytics::platform
{
namespace
{
std::string Words(int error) { return std::generic_category().message(error); }

void MakeFolder(const std::filesystem::path& folder, mode_t mode)
{
    std::error_code error;
    if (std::filesystem::is_directory(folder, error))
        return;
    if (std::filesystem::exists(folder, error))
        throw AnalyticsFault("The state folder " + folder.string() +
                             " can't be used: it is no folder; choose another state folder");
    const std::filesystem::path parent = folder.has_parent_path() ? folder.parent_path() : ".";
    MakeFolder(parent, 0755);
    if (mkdir(folder.c_str(), mode) != 0 && errno != EEXIST)
        throw AnalyticsFault(
            "The state folder " + folder.string() + " can't be made: " + Words(errno) +
            "; make the folder above it writable for the service, or choose another state folder");
    SyncFolder(parent);
}
} // namespace

void SyncFolder(const std::string& folder)
{
    const FileHandle handle(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (handle)
        fsync(handle.Get());
}

void GiveToOwner(const std::string& file)
{
    struct stat folder = {};
    if (geteuid() == 0 && stat(FolderOf(file).c_str(), &folder) == 0 &&
        chown(file.c_str(), folder.st_uid, folder.st_gid) != 0)
        throw AnalyticsFault("The owner of " + file + " can't be set: " + Words(errno));
}

void StateFolder::Take()
{
    std::filesystem::path folder(m_path);
    MakeFolder(folder.has_filename() ? folder : folder.parent_path(), 0700);
    const std::string path = m_path + "/lock";
    if (IsAt(m_lock.Get(), path))
        return;
    FileHandle lock(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock)
        throw AnalyticsFault("The state folder " + m_path + " can't be used: " + Words(errno) +
                             "; it has to be a folder in which the service may write");
    GiveToOwner(path);
    if (flock(lock.Get(), LOCK_EX | LOCK_NB) != 0)
        throw AnalyticsFault(
            "The state folder " + m_path +
            " is in use by another process; end that process, or choose another state folder");
    m_lock = std::move(lock);
}

} // namespace analytics::platform
