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
    // Whether any plan of this kind could need somebody to agree.
    static bool Matters(std::size_t hosts, const PlanOptions& options);

    void Count(const HostResult& plan);
    // What somebody has to agree to: that something is deleted, or that more than 30 % of more than 10 hosts
    // that answered change; empty if it is neither.
    std::string Reason() const;

  private:
    std::size_t m_hosts = 0;
    std::size_t m_changed = 0;
    std::size_t m_deletions = 0;
};

// Returns once somebody at the terminal has agreed to the reason. Throws Failure: usage without a terminal,
// refused after another answer than "yes".
void Agree(const std::string& reason);

} // namespace client
