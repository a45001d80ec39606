#pragma once

#include "files/File.h"
#include "threads/Mutex.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tarno::osa
{

class LeaderFollowers;

// Something with a descriptor that threads of a pool handle in steps, one thread at a time.
class EventHandler : public std::enable_shared_from_this<EventHandler>
{
  public:
    using Clock = std::chrono::steady_clock;

    // Why it goes on.
    enum class Cause
    {
        Ready,    // the descriptor is, as it was asked for; perhaps it isn't after all
        Slot,     // it has one of the slots until this step ends
        Woken,    // by LeaderFollowers::Wake()
        Deadline, // it has passed
        Ending    // nobody is to be waited for any longer; comes once
    };
    // What it waits for, until its deadline; a slot has none.
    enum class Wish
    {
        Read,
        Write,
        WakeUp,
        Slot,
        Nothing // it is through: the pool lets go of it
    };

    virtual ~EventHandler() = default;
    // Goes as far as it can without waiting. What it throws ends it.
    virtual Wish Continue(Cause cause) = 0;
    virtual int Descriptor() const = 0;

  protected:
    Clock::time_point m_deadline = Clock::time_point::max();

  private:
    friend class LeaderFollowers; // which guards these by its lock
    bool m_registered = false;
    bool m_woken = false;
    bool m_toldOfEnd = false;
};

// Leader and followers: a pool of equal threads that wait together for the events of all handlers. The
// kernel makes the one that waited the shortest the leader of an event; it handles the event itself, to the
// end if it can, and the next one leads meanwhile. A bounded number of slots for long steps leaves threads
// for the short ones. Public operations may be called from any thread.
class LeaderFollowers
{
  public:
    static constexpr std::size_t kSpare = 4;        // threads beyond those of the slots
    static constexpr std::size_t kMostBlocked = 64; // threads that others are started for

    // `slots`: long steps at a time. Throws std::system_error if the system lacks something.
    explicit LeaderFollowers(std::size_t slots);
    ~LeaderFollowers(); // stops
    LeaderFollowers(const LeaderFollowers&) = delete;
    LeaderFollowers& operator=(const LeaderFollowers&) = delete;

    // Starts the threads. Throws std::system_error.
    void Start();
    // The handler goes on once what it wishes for has come. Keeps it alive until then.
    void Wait(std::shared_ptr<EventHandler> handler, EventHandler::Wish wish);
    // Has the calling thread do a step of `handler`, and wait for what it wishes then.
    void Do(std::shared_ptr<EventHandler> handler, EventHandler::Cause cause);
    // A handler that waits goes on with Woken; one that doesn't will do so as soon as it wishes for WakeUp.
    void Wake(EventHandler& handler);
    // All that wait, and all that come to wait, go on once with Ending.
    void End();
    // Drops what waits, and returns when every step that was being done has ended. Not within a step.
    void Stop();

    // A step in a slot is blocked by something else than its processor, or goes on: a thread of the pool
    // that is blocked leaves its slot to others.
    static void Blocked(bool begins);

    // How many wait for an event, and how many for a slot.
    std::size_t Waiting();
    std::size_t WaitingForSlot();

  private:
    struct Task
    {
        std::shared_ptr<EventHandler> handler;
        EventHandler::Cause cause;
    };
    using Deadline = std::pair<EventHandler::Clock::time_point, EventHandler*>;

    void Run();
    bool Next(Task& task); // false at the end
    bool TakeReady(Task& task);
    bool TakeEvent(Task& task);
    EventHandler::Wish Step(EventHandler& handler, EventHandler::Cause cause);
    bool TakeFreeSlot();
    bool TakeSlot(const std::shared_ptr<EventHandler>& handler); // false: it is queued
    void LeaveSlot(bool leave);
    void Expire();
    bool Claim(EventHandler* handler, Task& task) ANALYTICS_REQUIRES(m_lock);
    bool Register(EventHandler& handler, EventHandler::Wish wish) ANALYTICS_REQUIRES(m_lock);
    void Push(Task task) ANALYTICS_REQUIRES(m_lock);
    void SetTimer() ANALYTICS_REQUIRES(m_lock);
    void AddThread() ANALYTICS_REQUIRES(m_lock);
    void Ring(std::size_t threads);

    const std::size_t m_slots;
    const analytics::platform::FileHandle m_epoll;
    const analytics::platform::FileHandle m_bell; // counts what is ready without an event
    const analytics::platform::FileHandle m_timer;

    analytics::platform::Mutex m_lock;
    std::unordered_map<EventHandler*, std::shared_ptr<EventHandler>> m_waiting ANALYTICS_GUARDED_BY(m_lock);
    std::set<Deadline> m_deadlines ANALYTICS_GUARDED_BY(m_lock);
    EventHandler::Clock::time_point
        m_timerSet ANALYTICS_GUARDED_BY(m_lock) = EventHandler::Clock::time_point::max();
    std::deque<Task> m_ready ANALYTICS_GUARDED_BY(m_lock);
    std::deque<std::shared_ptr<EventHandler>> m_queue ANALYTICS_GUARDED_BY(m_lock); // for a slot
    std::size_t m_blocked ANALYTICS_GUARDED_BY(m_lock) = 0;
    bool m_ending ANALYTICS_GUARDED_BY(m_lock) = false;
    std::vector<std::thread> m_threads ANALYTICS_GUARDED_BY(m_lock);
    // A request takes the lock twice, to be accepted; these spare it the rest. They are changed in such an
    // order that a thread that queues sees a slot given up just now, or the other one sees the queue.
    std::atomic<std::size_t> m_taken = 0;  // slots
    std::atomic<std::size_t> m_queued = 0; // as m_queue and m_ready hold; changed under the lock
    std::atomic<bool> m_stopped = false;   // set under the lock
};

} // namespace tarno::osa
