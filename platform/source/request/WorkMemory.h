#pragma once

#include "threads/Mutex.h"

#include <cstddef>
#include <list>

namespace analytics::platform
{

// The memory that requests may take together while they work on documents. Who wants more than is free
// waits, in the order of arrival; what is small passes those that are not. Any thread.
class WorkMemory
{
  public:
    static constexpr std::size_t kSmall = std::size_t{2} << 20U; // bytes

    // `reserve`: the part of `bytes` that is kept for small claims. `mostWaiting`: how many may wait.
    WorkMemory(std::size_t bytes, std::size_t reserve, std::size_t mostWaiting);

    // What a request holds at a time; it ends with the object.
    class Claim
    {
      public:
        explicit Claim(WorkMemory& memory) : m_memory(memory) {}
        ~Claim() { m_memory.Give(m_bytes); }
        Claim(const Claim&) = delete;
        Claim& operator=(const Claim&) = delete;

        // Holds at least `bytes`, or all that there is for one request. Gives back what it holds before it
        // waits for more, so that two never wait for each other. Throws AnalyticsFault, and holds nothing, if
        // too many wait already.
        void Raise(std::size_t bytes);

      private:
        WorkMemory& m_memory;
        std::size_t m_bytes = 0;
    };

    std::size_t Used();
    std::size_t Waiting();

  private:
    struct Waiter
    {
        std::size_t bytes;
        Event granted;
    };

    void Take(std::size_t bytes);
    void Give(std::size_t bytes);
    bool TakeOrQueue(Waiter& waiter); // true if it has its bytes
    bool Grant(std::size_t bytes, bool& largeWaits) ANALYTICS_REQUIRES(m_lock);

    const std::size_t m_total;
    const std::size_t m_forLarge;
    const std::size_t m_mostWaiting;
    Mutex m_lock;
    std::size_t m_used ANALYTICS_GUARDED_BY(m_lock) = 0;
    std::size_t m_usedByLarge ANALYTICS_GUARDED_BY(m_lock) = 0;
    std::list<Waiter*> m_waiting ANALYTICS_GUARDED_BY(m_lock); // in the order of arrival
};

// The memory for the work of this process.
WorkMemory& WorkOfProcess();

// Claims memory for this thread's request until it ends: for converting a document that came in so many
// bytes, and for giving back one that is stored in so many bytes. Nothing outside of a request. Throws as
// Raise().
void ClaimForReceived(std::size_t bytes);
void ClaimForStored(std::size_t bytes);

} // namespace analytics::platform
