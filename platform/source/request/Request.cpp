#include "request/Request.h"

#include <atomic>
#include <chrono>
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

std::string NewRequestNumber()
{
    static std::atomic<std::uint32_t> gNumber =
        static_cast<std::uint32_t>(std::chrono::system_clock::now().time_since_epoch().count() / 1'000'000);
    constexpr std::uint32_t kStep = 0x9E3779B1; // odd: each number comes once in 2^32
    const std::uint32_t number = gNumber += kStep;
    std::string text(8, '0');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = "0123456789abcdef"[number >> (28 - 4 * i) & 15U];
    return text;
}
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

Caller NewCaller(const std::string& name, const std::string& peer)
{
    return {.name = name, .peer = peer, .request = NewRequestNumber()};
}

const Caller* CurrentCaller() { return gCaller; }

std::uint64_t CurrentRequest() { return gWithinRequest ? gRequests : 0; }

} // namespace analytics::platform
