#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace analytics::platform
{

// One line for the operator. Lines of several threads don't mix.
void Say(const std::string& sentence);
// The same, unless this was said within the last 10 seconds.
void SayOnce(const std::string& sentence);

// Something that may stop working for a while. Its beginning and its end are reported on standard error, at
// most once in 10 seconds, however often it breaks and works again. One thread at a time.
class Outage
{
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds kQuiet{10};

    // At each failure.
    void Begin(const std::string& sentence, Clock::time_point now = Clock::now());
    // At each success.
    void End(const std::string& sentence);

  private:
    bool m_told = false; // of the beginning, and not yet of the end
    std::optional<Clock::time_point> m_last;
};

} // namespace analytics::platform
