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

std::optional<AttemptThrottle::Time> AttemptThrottle::Begin(const std::string& who, Time now)
{
    const Attempts* const known = m_attempts.Find(who, now);
    Attempts attempts = known == nullptr ? Attempts() : *known;
    const Time turn = std::max(now, attempts.next);
    if (turn - now > kLongestWait)
        return std::nullopt;
    attempts.next = turn + PauseAfter(++attempts.failures);
    m_attempts.Put(who, attempts, now + kForgotten);
    return turn;
}

void AttemptThrottle::Succeeded(const std::string& who)
{
    Attempts* const attempts = m_attempts.Find(who, Time::min()); // however long it took
    if (attempts != nullptr && attempts->failures > 0)
        --attempts->failures;
}

} // namespace tarno::osa
