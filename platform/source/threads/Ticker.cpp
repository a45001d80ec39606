#include "threads/Ticker.h"

#include <utility>

namespace analytics::platform
{

Ticker::Ticker(std::chrono::milliseconds interval, std::function<void()> tick)
    : m_thread(
          [this, interval, call = std::move(tick)]
          {
              while (!EndedWithin(interval))
                  call();
          })
{
}

Ticker::~Ticker()
{
    {
        const MutexLock hold(m_lock);
        m_ended = true;
        m_ending.Wake();
    }
    m_thread.join();
}

bool Ticker::EndedWithin(std::chrono::milliseconds interval)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + interval;
    const MutexLock hold(m_lock);
    for (Clock::time_point now = Clock::now(); !m_ended && now < end; now = Clock::now())
        m_ending.WaitFor(m_lock, std::chrono::ceil<std::chrono::milliseconds>(end - now));
    return m_ended;
}

} // namespace analytics::platform
