#include "Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace client
{
namespace
{
constexpr std::size_t kBar = 40;
constexpr char kClearLine[] = "\r\x1B[K";
} // namespace

Progress::Progress(std::size_t count)
    : m_count(std::max<std::size_t>(count, 1)), m_terminal(isatty(STDERR_FILENO) == 1)
{
    Draw();
}

Progress::~Progress() { Clear(); }

void Progress::Step()
{
    ++m_done;
    Draw();
}

void Progress::Clear() const
{
    if (m_terminal)
        std::fputs(kClearLine, stderr);
}

void Progress::Draw() const
{
    if (!m_terminal)
        return;
    const std::size_t full = kBar * m_done / m_count;
    std::fprintf(stderr, "%s[%s%s] %zu of %zu", kClearLine, std::string(full, '#').c_str(),
                 std::string(kBar - full, ' ').c_str(), m_done, m_count);
}

} // namespace client
