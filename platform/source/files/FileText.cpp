#include "files/FileText.h"

#include "files/FileHandle.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace analytics::platform
{
namespace
{
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
        file.failure = "it is no regular file";
        return file;
    }
    ReadAll(file, handle.Get());
    if (!file.failure.empty())
        file.text.clear();
    return file;
}

bool WatchedFile::Renew()
{
    if (m_trusted && StampOf(m_path) == m_last.stamp)
        return false;
    FileText file = ReadFile(m_path);
    m_trusted = file.Missing() || (file.failure.empty() && Settled(file.stamp));
    std::swap(file, m_last);
    const bool first = !std::exchange(m_read, true);
    return first || file.text != m_last.text || file.failure != m_last.failure;
}

} // namespace analytics::platform
