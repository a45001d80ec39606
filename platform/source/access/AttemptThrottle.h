#pragma once

#include "threads/TimedCache.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace tarno::osa
{

// Slows down whoever tries password after password. Each attempt counts as failed until it is found
// right, so that many at a time don't help. Nobody waits for the attempts of somebody else. One thread
// at a time.
class AttemptThrottle
{
  public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr unsigned kFree = 5; // failures without a pause
    static constexpr std::chrono::milliseconds kFirstPause{250};
    static constexpr std::chrono::milliseconds kLongestPause{4000};
    static constexpr std::chrono::seconds kLongestWait{10};
    static constexpr std::chrono::minutes kForgotten{5}; // after the last attempt
    static constexpr std::size_t kMost = 1024;           // addresses; the one quiet the longest makes room

    // When an attempt that comes `now` may be looked at; nothing if it would have to wait too long.
    std::optional<Time> Begin(const std::string& who, Time now);
    // An attempt was right after all.
    void Succeeded(const std::string& who);

  private:
    struct Attempts
    {
        unsigned failures = 0;
        Time next;
    };
    analytics::platform::TimedCache<Attempts, kMost> m_attempts;
};

} // namespace tarno::osa
