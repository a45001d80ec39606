#include "Progress.h"

#include "Text.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

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
    Draw(0);
}

Progress::~Progress()
{
    if (m_terminal)
        std::fputs(kClearLine, stderr);
}

void Progress::Step(std::size_t done, const std::string& line) const
{
    if (m_terminal)
        Draw(done);
    else
        std::fprintf(stderr, "[%zu/%zu] %s\n", done, m_count, Printable(line).c_str());
}

void Progress::Draw(std::size_t done) const
{
    if (!m_terminal)
        return;
    const std::size_t full = kBar * done / m_count;
    std::fprintf(stderr, "%s[%s%s] %zu of %zu", kClearLine, std::string(full, '#').c_str(),
                 std::string(kBar - full, ' ').c_str(), done, m_count);
}

} // namespace client
