#pragma once

#include <csignal>
#include <cstddef>
#include <functional>
#include <memory>

namespace client
{

// SIGINT and SIGTERM come to a descriptor while it lives, for this thread and those that it starts. One that
// nobody has taken until then comes as usual afterwards.
class Signals
{
  public:
    Signals();
    ~Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

    int Descriptor() const { return m_descriptor; }
    // Returns false if none has come.
    bool Take() const;

  private:
    sigset_t m_before = {};
    int m_descriptor = -1;
};

// Work on many hosts, numbered from 0: a limited number at a time, until it is done or stopped. A signal that
// comes until Run() ends stops it: nothing more is begun then, and what has begun has ten seconds to end, or
// until the next signal.
class Fleet
{
  public:
    using Work = std::function<void(std::size_t)>;

    explicit Fleet(std::size_t jobs);
    ~Fleet();

    // Does work(first) to work(last - 1) on threads of its own and calls done() after each, one at a time.
    // Neither may throw. Returns false if work that has begun didn't end in time: done() isn't called for it
    // and its threads go on, so that the process has to end without giving up anything that they use.
    bool Run(const Signals& signals, std::size_t first, std::size_t last, const Work& work, const Work& done);

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
