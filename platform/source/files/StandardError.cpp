#include "files/StandardError.h"

#include "threads/Mutex.h"
#include "threads/TimedCache.h"

#include <chrono>
#include <cstdio>

namespace analytics::platform
{
namespace
{

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kQuiet(10);
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
    const Clock::time_point now = Clock::now();
    if (said.sentences.Find(sentence, now) != nullptr)
        return;
    said.sentences.Put(sentence, true, now + kQuiet);
    Say(sentence);
}

} // namespace analytics::platform
