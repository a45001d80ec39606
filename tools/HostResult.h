#pragma once

#include "Failure.h"
#include "Plan.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace client
{

enum class HostState
{
    Same,
    Differs,     // planned
    Changed,     // done
    Failed,      // it may be changed in part; the error says how far
    Unreachable, // no answer, a wrong certificate or no access
    Skipped,     // not begun; with an error: refused
    Restored     // a write failed, and the host has what it had
};

// The result for one host.
struct HostResult
{
    std::string host; // its URL
    HostState state = HostState::Skipped;
    std::vector<Step> steps{};
    std::string error{};
    Findings warnings{};
    Exit code = Exit::Refused; // what the error is to the program's exit

    bool Bad() const { return !error.empty(); }
};

// The writes as a JSON array, the same text for the same writes.
std::string ChangesJson(const std::vector<Step>& steps);
// A line for programs.
std::string JsonLine(const HostResult& result);
// Lines for people: the host, and under it what is written and how documents differ.
std::string Lines(const HostResult& result);

// Counts the hosts by their results.
class Tally
{
  public:
    void Count(const HostResult& result);
    std::size_t Bad() const { return m_bad; }
    std::size_t Of(HostState state) const;
    // As in "3 hosts: 2 same, 1 failed."
    std::string Sentence() const;

  private:
    std::map<HostState, std::size_t> m_counts;
    std::size_t m_bad = 0;
};

} // namespace client
