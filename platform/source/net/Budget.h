#pragma once

#include "threads/Mutex.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>

namespace tarno::osa
{

// The memory that the connections of a server hold together for requests and answers. Bounded, so
// that many large requests or slow readers cost time instead of memory. Any thread; a share is used by one at
// a time. What a share calls is called under the budget's lock: it may not use the budget.
//
// A reader that finds the budget used up waits its turn, the oldest first. One of them at a time may
// go beyond the budget, so that some request always gets whole and gives its memory back. Answers
// are there already and can't wait; for them the one is dropped that has been sent the longest.
class Budget
{
  public:
    // What one connection holds. It gives back everything when it ends.
    class Share
    {
      public:
        explicit Share(Budget& budget); // younger than all before it
        ~Share();
        Share(const Share&) = delete;
        Share& operator=(const Share&) = delete;

        // True: `bytes` may be held now. False: `granted` will be called once they may.
        bool Ask(std::size_t bytes, std::function<void()> granted);
        // Holds `bytes` of an answer. `dropped` is called if others need them, and they don't count any more.
        void Keep(std::size_t bytes, std::function<void()> dropped);
        void Release();

      private:
        friend class Budget;
        Budget& m_budget;
        const std::uint64_t m_age;
        bool m_listed = false; // it has asked for something
        std::atomic<std::size_t> m_bytes = 0;
        std::size_t m_wanted = 0;
        std::function<void()> m_call;
    };

    explicit Budget(std::size_t bytes) : m_total(bytes) {}
    std::size_t Used();

  private:
    bool Take(Share& share, std::size_t bytes) ANALYTICS_REQUIRES(m_lock);
    void Set(Share& share, std::size_t bytes) ANALYTICS_REQUIRES(m_lock);
    void Release(Share& share) ANALYTICS_REQUIRES(m_lock);
    void GrantWaiting() ANALYTICS_REQUIRES(m_lock);
    void DropKept() ANALYTICS_REQUIRES(m_lock);

    const std::size_t m_total;
    analytics::platform::Mutex m_lock;
    std::size_t m_used ANALYTICS_GUARDED_BY(m_lock) = 0;
    std::atomic<std::uint64_t> m_shares = 0;
    std::map<std::uint64_t, Share*> m_waiting ANALYTICS_GUARDED_BY(m_lock); // by age
    Share* m_beyond ANALYTICS_GUARDED_BY(m_lock) = nullptr; // the one that may go beyond the budget
    std::list<Share*> m_kept ANALYTICS_GUARDED_BY(m_lock);  // answers, the longest kept first
};

} // namespace tarno::osa
