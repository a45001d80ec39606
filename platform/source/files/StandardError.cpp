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

struct Said
{
    Mutex lock;
    TimedCache<bool, kMostSaid> sentences ANALYTICS_GUARDED_BY(lock);
};

Said& TheSaid()
{
    static Said said;
    return said;
}
} // namespace

void Say(const std::string& sentence) { std::fputs((sentence + '\n').c_str(), stderr); }

void SayOnce(const std::string& sentence)
{
    Said& said = TheSaid();
    const MutexLock hold(said.lock);
    const Outage::Clock::time_point now = Outage::Clock::now();
    if (said.sentences.Find(sentence, now) != nullptr)
        return;
    said.sentences.Put(sentence, true, now + Outage::kQuiet);
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
