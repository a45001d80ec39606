#pragma once

#include "HostResult.h"
#include "Hosts.h"

#include <atomic>
#include <chrono>
#include <functional>

namespace client
{

// What is wanted of every host.
struct Goal
{
    ProfileDocuments wanted;
    PlanOptions options;
    std::chrono::seconds time{30}; // for all that is done on one host
    bool strict = false;           // nothing is written where there is a warning
};

// How far the work on a host has come, for other threads.
struct Trace
{
    std::atomic<bool> begun{false};
    std::atomic<std::size_t> writes{0}; // begun
};

// Reads what the host has and plans what to write. Warns of behaviors that can't be active beside the
// others. Doesn't throw.
HostResult PlanHost(const Target& target, const Goal& goal);

// Whether the plan for a host may be carried out; if it says no, it may put the reason into the error.
using Permission = std::function<bool(HostResult& plan)>;

// Plans, writes what differs, and reads it again: also warns of what the service changed. If a write
// fails, the host is restored. Doesn't throw.
HostResult ApplyHost(const Target& target, const Goal& goal, const Permission& permission, Trace& trace);

// Of a host on which the work was given up.
HostResult Abandoned(const Target& target, const Trace& trace);

} // namespace client
