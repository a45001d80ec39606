#pragma once

#include "threads/Lock.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <vector>

namespace tarno::osa
{

class Exchange;

// Which thread of a server does what next. A few accept connections, and take their requests themselves
// if they may; the others wait until one of those is busy, or until a request comes from the loop. As
// long as connections are allowed, one thread accepts, however many requests are served. Any thread.
class Turns
{
  public:
    static constexpr std::size_t kServing = 48; // requests at a time
    static constexpr std::size_t kAccepting = 4;
    static constexpr std::size_t kThreads = kServing + kAccepting; // enough for both at once
    // After a failure to accept: as a rule some connection ends within this time.
    static constexpr std::chrono::milliseconds kBetterTime{100};

    enum class Task
    {
        Accept, // ends with Accepted() or NotAccepted()
        Serve,  // ends with Served()
        End
    };
    enum class Way
    {
        AtOnce, // serve it if it can be; ends with Served()
        Loop,   // leave it to the loop
        Close   // the accepting has ended
    };

    explicit Turns(std::size_t maxConnections);

    // Waits for the next task. `exchange` is set for Serve.
    Task Next(std::shared_ptr<Exchange>& exchange);
    // Each connection counts until ConnectionEnded().
    // `atOnce`: whether it may be served by this thread.
    Way Accepted(bool atOnce);
    // Returns after a while if accepting failed for want of something.
    void NotAccepted(bool failed);
    void ConnectionEnded();
    void Served();

    void BeginAccepting();
    void EndAccepting();
    // A whole request that waits for a thread. Not after Stop().
    void Add(std::shared_ptr<Exchange> exchange);
    // Next() ends for everybody, once the requests that wait have been handed out.
    void Stop();
    // No connection is open, no request waits or is served.
    bool Idle();
    // Threads without a task.
    std::size_t Waiting();

  private:
    bool MayAccept() const ANALYTICS_REQUIRES(m_lock);
    bool MayServe() const ANALYTICS_REQUIRES(m_lock);
    void Call() ANALYTICS_REQUIRES(m_lock);
    void WaitForCall() ANALYTICS_REQUIRES(m_lock);

    const std::size_t m_maxConnections;
    analytics::platform::Lock m_lock;
    analytics::platform::Condition m_betterTime;
    std::deque<std::shared_ptr<Exchange>> m_requests ANALYTICS_GUARDED_BY(m_lock);
    // Those that are open, and one that may come for each thread that accepts.
    std::size_t m_connections ANALYTICS_GUARDED_BY(m_lock) = 0;
    std::size_t m_accepting ANALYTICS_GUARDED_BY(m_lock) = 0;
    std::size_t m_serving ANALYTICS_GUARDED_BY(m_lock) = 0;
    // Who waited least is called first: the processor still knows its memory, and the others' caches of
    // the allocator stay small.
    std::vector<analytics::platform::Condition*> m_waiting ANALYTICS_GUARDED_BY(m_lock);
    std::size_t m_coming ANALYTICS_GUARDED_BY(m_lock) = 0; // called, and not here yet
    bool m_open ANALYTICS_GUARDED_BY(m_lock) = false;      // for connections
    bool m_pausing ANALYTICS_GUARDED_BY(m_lock) = false;
    bool m_stopping ANALYTICS_GUARDED_BY(m_lock) = false;
};

} // namespace tarno::osa
