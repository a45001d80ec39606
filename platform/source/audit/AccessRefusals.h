#pragma once

#include "audit/AuditEntry.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace analytics::platform
{

// Who tries passwords doesn't fill the trail: the first refusal of an address is told at once, the further
// ones together at the end of each 10 seconds, by user and reason of the last. Those of the addresses beyond
// the first 1,024 at a time are told together, without their address. One thread at a time.
class AccessRefusals
{
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds kWindow{10};
    static constexpr std::size_t kMost = 1024;

    // What is to be told at once, if anything.
    std::vector<AuditEntry> Add(AuditEntry entry, Clock::time_point now);
    // What is to be told now.
    std::vector<AuditEntry> Due(Clock::time_point now);
    // What is left to tell, at the end.
    std::vector<AuditEntry> Rest();

  private:
    struct Window
    {
        AuditEntry last; // counts those that are yet to be told
        Clock::time_point end;
    };
    std::map<std::string, Window> m_windows; // by address
};

} // namespace analytics::platform
