#pragma once

#include <analytics/Annotations.h>

#include <chrono>
#include <condition_variable>
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
    friend class Condition;
    std::mutex m_mutex;
};

// What a thread waits for while it lets go of the Lock. It may wake without having been woken.
class Condition
{
  public:
    void Wait(Lock& lock) ANALYTICS_REQUIRES(lock)
    {
        std::unique_lock<std::mutex> hold(lock.m_mutex, std::adopt_lock);
        m_condition.wait(hold);
        hold.release();
    }
    void WaitFor(Lock& lock, std::chrono::milliseconds time) ANALYTICS_REQUIRES(lock)
    {
        std::unique_lock<std::mutex> hold(lock.m_mutex, std::adopt_lock);
        m_condition.wait_for(hold, time);
        hold.release();
    }
    // Wakes one. Called with the Lock held, so that the condition is still there.
    void Wake() { m_condition.notify_one(); }

  private:
    std::condition_variable m_condition;
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
