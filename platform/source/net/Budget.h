#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>

namespace tarno::osa
{

// The memory that the connections of a server hold together for requests and answers. Bounded, so
// that many large requests or slow readers cost time instead of memory. One thread only.
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
        // Holds `bytes` of an answer. `dropped` is called if others need them; it has to release them.
        void Keep(std::size_t bytes, std::function<void()> dropped);
        void Release();

      private:
        friend class Budget;
        Budget& m_budget;
        const std::uint64_t m_age;
        std::size_t m_bytes = 0;
        std::size_t m_wanted = 0;
        std::function<void()> m_call;
    };

    explicit Budget(std::size_t bytes) : m_total(bytes) {}
    std::size_t Used() const { return m_used; }

  private:
    bool Take(Share& share, std::size_t bytes);
    void Set(Share& share, std::size_t bytes);
    void GrantWaiting();
    void DropKept();

    const std::size_t m_total;
    std::size_t m_used = 0;
    std::uint64_t m_shares = 0;
    std::map<std::uint64_t, Share*> m_waiting; // by age
    Share* m_beyond = nullptr;                 // the one that may go beyond the budget
    std::list<Share*> m_kept;                  // answers, the longest kept first
};

} // namespace tarno::osa
