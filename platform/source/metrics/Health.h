#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace analytics::platform
{

constexpr std::chrono::seconds kLongestHealthCheck{2};

// Why the service can't do its work now, as a sentence; empty if it can. `check` runs on a thread of its own,
// once at a time: callers that come while it runs get the same answer, and none waits longer than `limit`.
// Any thread.
std::string Health(std::chrono::milliseconds limit, const std::function<std::string()>& check);

} // namespace analytics::platform
