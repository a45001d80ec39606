#include "files/StandardError.h"

#include "threads/Mutex.h"
#include "threads/TimedCache.h"

#include <cstdio>
#include <utility>

namespace analytics::platform
{
namespace
{
constexpr std::size_t kMostSaid = 64; // that are remembered

Mutex gSaidLock;
TimedCache<bool, kMostSaid> gSaid ANALYTICS_GUARDED_BY(gSaidLock);
} // namespace

void Say(const std::string& sentence) { std::fputs((sentence + '\n').c_str(), stderr); }

void SayOnce(const std::string& sentence)
{
    const MutexLock hold(gSaidLock);
    const Outage::Clock::time_point now = Outage::Clock::now();
    if (gSaid.Find(sentence, now) != nullptr)
        return;
    gSaid.Put(sentence, true, now + Outage::kQuiet);
    Say(sentence);
}

void Outage::Begin(const std::string& sentence, Clock::time_point now)
{
    if (m_told || (m_last && now - *m_last < kQuiet))
        return;
    m_told = true;
    m_last = now;
    Say(sentence);
}

void Outage::End(const std::string& sentence)
{
    if (std::exchange(m_told, false))
        Say(sentence);
}

} // namespace analytics::platform
