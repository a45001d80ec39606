#include "request/WorkMemory.h"

#include <analytics/Faults.h>

#include "request/Request.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace analytics::platform
{
namespace
{
constexpr std::size_t kMiB = std::size_t{1} << 20U;
constexpr std::size_t kTotal = 320 * kMiB;
constexpr std::size_t kReserve = 64 * kMiB;
constexpr std::size_t kMostWaiting = 64;

// How much memory the work on a document takes for each of its bytes, and at most. A text that is received
// may consist of elements of six bytes, each of which becomes a rule; the limit on elements bounds that.
constexpr std::size_t kPerReceivedByte = 128;
constexpr std::size_t kPerStoredByte = 40;
constexpr std::size_t kMostOfOne = 128 * kMiB;

void ClaimForRequest(std::size_t bytes, std::size_t perByte)
{
    if (CurrentRequest() == 0)
        return;
    thread_local std::optional<WorkMemory::Claim> claim;
    if (!claim)
    {
        claim.emplace(WorkOfProcess());
        AtRequestEnd([] { claim.reset(); });
    }
    claim->Raise(std::min(bytes, kMostOfOne / perByte) * perByte);
}
} // namespace

WorkMemory::WorkMemory(std::size_t bytes, std::size_t reserve, std::size_t mostWaiting)
    : m_total(bytes), m_forLarge(bytes - reserve), m_mostWaiting(mostWaiting)
{
}

void WorkMemory::Claim::Raise(std::size_t bytes)
{
    bytes = std::min(bytes, m_memory.m_forLarge);
    if (bytes <= m_bytes)
        return;
    m_memory.Give(std::exchange(m_bytes, 0));
    m_memory.Take(bytes);
    m_bytes = bytes;
}

std::size_t WorkMemory::Used()
{
    const MutexLock hold(m_lock);
    return m_used;
}

std::size_t WorkMemory::Waiting()
{
    const MutexLock hold(m_lock);
    return m_waiting.size();
}

// A large claim waits behind those that wait already, a small one only for room.
bool WorkMemory::Grant(std::size_t bytes, bool& largeWaits)
{
    const bool large = bytes > kSmall;
    if (m_used + bytes > m_total || (large && (largeWaits || m_usedByLarge + bytes > m_forLarge)))
    {
        largeWaits = largeWaits || large;
        return false;
    }
    m_used += bytes;
    m_usedByLarge += large ? bytes : 0;
    return true;
}

bool WorkMemory::TakeOrQueue(Waiter& waiter)
{
    const MutexLock hold(m_lock);
    bool largeWaits = std::ranges::any_of(m_waiting, [](const Waiter* w) { return w->bytes > kSmall; });
    if (Grant(waiter.bytes, largeWaits))
        return true;
    if (m_waiting.size() >= m_mostWaiting)
        throw AnalyticsFault("The service is busy with other large documents; try again later");
    m_waiting.push_back(&waiter);
    return false;
}

void WorkMemory::Take(std::size_t bytes)
{
    Waiter waiter{bytes, {}};
    if (!TakeOrQueue(waiter))
        waiter.granted.Wait();
}

void WorkMemory::Give(std::size_t bytes)
{
    const MutexLock hold(m_lock);
    m_used -= bytes;
    m_usedByLarge -= bytes > kSmall ? bytes : 0;
    bool largeWaits = false;
    for (auto at = m_waiting.begin(); at != m_waiting.end();)
    {
        Waiter& waiter = **at;
        if (!Grant(waiter.bytes, largeWaits))
        {
            ++at;
            continue;
        }
        at = m_waiting.erase(at);
        waiter.granted.Set();
    }
}

WorkMemory& WorkOfProcess()
{
    static WorkMemory memory(kTotal, kReserve, kMostWaiting);
    return memory;
}

void ClaimForReceived(std::size_t bytes) { ClaimForRequest(bytes, kPerReceivedByte); }
void ClaimForStored(std::size_t bytes) { ClaimForRequest(bytes, kPerStoredByte); }

} // namespace analytics::platform
