#include "request/Request.h"

#include <utility>
#include <vector>

namespace analytics::platform
{
namespace
{
thread_local std::uint64_t gRequests = 0; // that this thread has begun
thread_local bool gWithinRequest = false;
thread_local const Caller* gCaller = nullptr;
thread_local std::vector<std::function<void()>> gAtEnd;
} // namespace

RequestScope::RequestScope()
{
    ++gRequests;
    gWithinRequest = true;
}

RequestScope::RequestScope(const Caller& caller) : RequestScope() { gCaller = &caller; }

// The actions belong to the request still.
RequestScope::~RequestScope()
{
    for (; !gAtEnd.empty(); gAtEnd.pop_back())
        gAtEnd.back()();
    gWithinRequest = false;
    gCaller = nullptr;
}

void AtRequestEnd(std::function<void()> action) { gAtEnd.push_back(std::move(action)); }

const Caller* CurrentCaller() { return gCaller; }

std::uint64_t CurrentRequest() { return gWithinRequest ? gRequests : 0; }

} // namespace analytics::platform
