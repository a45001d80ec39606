#include "access/AttemptThrottle.h"

#include <algorithm>

namespace tarno::osa
{
namespace
{

std::chrono::milliseconds PauseAfter(unsigned failures)
{
    if (failures <= AttemptThrottle::kFree)
        return std::chrono::milliseconds(0);
    const unsigned doublings = std::min(failures - AttemptThrottle::kFree - 1, 10U);
    return std::min(AttemptThrottle::kFirstPause * (1U << doublings), AttemptThrottle::kLongestPause);
}

} // namespace

AttemptThrottle::Attempts& AttemptThrottle::Of(const std::string& who, Time now)
{
    if (m_attempts.size() >= kMost && m_attempts.count(who) == 0)
        m_attempts.erase(std::min_element(m_attempts.begin(), m_attempts.end(),
                                          [](const auto& one, const auto& other)
                                          { return one.second.last < other.second.last; }));
    Attempts& attempts = m_attempts[who];
    if (now - attempts.last > kForgotten)
        attempts = {};
    return attempts;
}

std::optional<AttemptThrottle::Time> AttemptThrottle::Begin(const std::string& who, Time now)
{
    Attempts& attempts = Of(who, now);
    const Time turn = std::max(now, attempts.next);
    if (turn - now > kLongestWait)
        return std::nullopt;
    attempts.last = now;
    attempts.next = turn + PauseAfter(++attempts.failures);
    return turn;
}

void AttemptThrottle::Succeeded(const std::string& who)
{
    const auto found = m_attempts.find(who);
    if (found != m_attempts.end() && found->second.failures > 0)
        --found->second.failures;
}

} // namespace tarno::osa
