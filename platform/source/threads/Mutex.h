#pragma once

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <condition_variable>
#include <mutex>

// Clang's thread annotations: what a lock guards is checked when Clang compiles, and reads as a
// comment everywhere else.
#if defined(__clang__)
#define ANALYTICS_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define ANALYTICS_THREAD_ANNOTATION(x)
#endif

#define ANALYTICS_CAPABILITY(name) ANALYTICS_THREAD_ANNOTATION(capability(name))
#define ANALYTICS_SCOPED_CAPABILITY ANALYTICS_THREAD_ANNOTATION(scoped_lockable)
#define ANALYTICS_GUARDED_BY(lock) ANALYTICS_THREAD_ANNOTATION(guarded_by(lock))
#define ANALYTICS_REQUIRES(...) ANALYTICS_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define ANALYTICS_ACQUIRE(...) ANALYTICS_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ANALYTICS_RELEASE(...) ANALYTICS_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define ANALYTICS_NO_THREAD_ANALYSIS ANALYTICS_THREAD_ANNOTATION(no_thread_safety_analysis)

namespace analytics::platform
{

// A std::mutex with the annotations of Clang's analysis.
class ANALYTICS_CAPABILITY("mutex") Mutex
{
  public:
    void Lock() ANALYTICS_ACQUIRE() { m_mutex.lock(); }
    void Unlock() ANALYTICS_RELEASE() { m_mutex.unlock(); }

  private:
    friend class CondVar;
    std::mutex m_mutex;
};

// A condition variable. Waiting may end without a wake-up.
class CondVar
{
  public:
    void WaitFor(Mutex& mutex, std::chrono::milliseconds time) ANALYTICS_REQUIRES(mutex)
    {
        std::unique_lock<std::mutex> lock(mutex.m_mutex, std::adopt_lock);
        m_condition.wait_for(lock, time);
        lock.release();
    }
    // Wakes one thread. Called with the mutex held, so that the condition variable is still there.
    void Wake() { m_condition.notify_one(); }

  private:
    std::condition_variable m_condition;
};

// Holds a Mutex for the length of a scope.
class ANALYTICS_SCOPED_CAPABILITY MutexLock
{
  public:
    explicit MutexLock(Mutex& mutex) ANALYTICS_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.Lock(); }
    ~MutexLock() ANALYTICS_RELEASE() { m_mutex.Unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

  private:
    Mutex& m_mutex;
};

// An event that is set once and releases any number of threads. It is a futex: std::atomic's own wait yields
// several times before it sleeps, which costs more than the wait. Any thread.
class Event
{
  public:
    using Call = void (*)(bool begins);

    // Called on a thread that begins or ends to wait for any event, so that another one can take its place.
    static void OnWaiting(Call call) { gOnWaiting = call; }

    void Wait() const
    {
        if (IsSet())
            return;
        const Call call = gOnWaiting;
        if (call != nullptr)
            call(true);
        while (!IsSet())
            syscall(SYS_futex, &m_set, FUTEX_WAIT_PRIVATE, 0, nullptr, nullptr, 0);
        if (call != nullptr)
            call(false);
    }
    void Set()
    {
        m_set.store(1, std::memory_order_release);
        syscall(SYS_futex, &m_set, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
    }

  private:
    bool IsSet() const { return m_set.load(std::memory_order_acquire) != 0; }

    static_assert(sizeof(std::atomic<int>) == sizeof(int), "the kernel looks at an int");
    static inline std::atomic<Call> gOnWaiting = nullptr;
    std::atomic<int> m_set = 0;
};

} // namespace analytics::platform
