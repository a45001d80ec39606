#pragma once

#include <cstddef>
#include <functional>
#include <memory>

namespace client
{

// Work on many hosts, numbered from 0: a limited number at a time, until it is done or stopped. SIGINT and
// SIGTERM stop it while Run() is at work: nothing more is begun then, and what has begun has ten seconds to
// end, or until the next signal.
class Fleet
{
  public:
    using Work = std::function<void(std::size_t)>;

    explicit Fleet(std::size_t jobs);
    ~Fleet();

    // Does work(first) to work(last - 1) on threads of its own and calls done() after each, one at a time.
    // Neither may throw. Returns false if work that has begun didn't end in time: done() isn't called for it
    // and its threads go on, so that the process has to end without giving up anything that they use.
    bool Run(std::size_t first, std::size_t last, const Work& work, const Work& done);

    // From done() or elsewhere: nothing more is begun.
    void Stop();
    bool Stopped() const;
    // A signal has stopped it.
    bool Interrupted() const;

  private:
    struct Shared;
    std::size_t m_jobs;
    std::shared_ptr<Shared> m_shared;
};

} // namespace client
