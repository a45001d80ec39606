#include "files/WatchedFile.h"

#include <utility>

namespace analytics::platform
{

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
