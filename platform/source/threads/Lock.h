#pragma once

#include <analytics/Annotations.h>

#include <mutex>

namespace analytics::platform
{

// A std::mutex that Clang's analysis knows.
class ANALYTICS_CAPABILITY("lock") Lock
{
  public:
    void Acquire() ANALYTICS_ACQUIRE() { m_mutex.lock(); }
    void Release() ANALYTICS_RELEASE() { m_mutex.unlock(); }

  private:
    std::mutex m_mutex;
};

// Holds a Lock for the length of a scope.
class ANALYTICS_SCOPED_CAPABILITY Hold
{
  public:
    explicit Hold(Lock& lock) ANALYTICS_ACQUIRE(lock) : m_lock(lock) { m_lock.Acquire(); }
    ~Hold() ANALYTICS_RELEASE() { m_lock.Release(); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

  private:
    Lock& m_lock;
};

} // namespace analytics::platform
