#include "threads/Ticker.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace analytics::platform
{

Ticker::Ticker(std::chrono::milliseconds interval, std::function<void()> tick)
    : m_thread(
          [interval, call = std::move(tick)](const std::stop_token& end)
          {
              std::mutex mutex;
              std::unique_lock lock(mutex);
              std::condition_variable_any ending;
              while (!ending.wait_for(lock, end, interval, [&end] { return end.stop_requested(); }))
                  call();
          })
{
}

} // namespace analytics::platform
