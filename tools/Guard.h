#pragma once

#include "HostResult.h"

#include <cstddef>
#include <string>

namespace client
{

// Counts what plans take away from hosts, for a person to agree to. Creating a profile takes nothing.
class Guard
{
  public:
    // Whether any plan of this kind could need a confirmation.
    static bool Matters(std::size_t hosts, const PlanOptions& options);

    void Count(const HostResult& plan);
    // What has to be confirmed: that something is deleted, or that more than 30 % of more than 10 hosts that
    // answered change; empty if neither.
    std::string Reason() const;

  private:
    std::size_t m_hosts = 0;
    std::size_t m_changed = 0;
    std::size_t m_deletions = 0;
};

// Asks for confirmation at the terminal, and returns if it was given. Throws Failure: usage without a
// terminal, refused after another answer than "yes".
void Agree(const std::string& reason);

} // namespace client
