#include "net/Budget.h"

#include <algorithm>
#include <utility>

namespace tarno::osa
{
using analytics::platform::MutexLock;

Budget::Share::Share(Budget& budget) : m_budget(budget), m_age(budget.m_shares++) {}

Budget::Share::~Share() { Release(); }

bool Budget::Share::Ask(std::size_t bytes, std::function<void()> granted)
{
    if (bytes <= m_bytes)
        return true;
    m_listed = true;
    const MutexLock hold(m_budget.m_lock);
    const bool first = m_budget.m_waiting.empty() || m_budget.m_beyond == this;
    if (first && m_budget.Take(*this, bytes))
        return true;
    m_wanted = bytes;
    m_call = std::move(granted);
    m_budget.m_waiting[m_age] = this;
    return false;
}

void Budget::Share::Keep(std::size_t bytes, std::function<void()> dropped)
{
    m_listed = true;
    const MutexLock hold(m_budget.m_lock);
    m_budget.Release(*this);
    m_budget.Set(*this, bytes);
    m_call = std::move(dropped);
    m_budget.m_kept.push_back(this);
    m_budget.DropKept();
}

void Budget::Share::Release()
{
    if (!m_listed)
        return; // Most never hold anything that counts.
    const MutexLock hold(m_budget.m_lock);
    m_budget.Release(*this);
}

std::size_t Budget::Used()
{
    const MutexLock hold(m_lock);
    return m_used;
}

void Budget::Release(Share& share)
{
    m_waiting.erase(share.m_age);
    m_kept.remove(&share);
    if (m_beyond == &share)
        m_beyond = nullptr;
    Set(share, 0);
    GrantWaiting();
}

bool Budget::Take(Share& share, std::size_t bytes)
{
    if (m_used - share.m_bytes + bytes > m_total)
    {
        if (m_beyond != nullptr && m_beyond != &share)
            return false;
        m_beyond = &share;
    }
    Set(share, bytes);
    return true;
}

void Budget::Set(Share& share, std::size_t bytes)
{
    m_used = m_used - share.m_bytes + bytes;
    share.m_bytes = bytes;
}

void Budget::GrantWaiting()
{
    while (!m_waiting.empty())
    {
        const auto oldest = m_waiting.begin();
        Share& share = *oldest->second;
        if (!Take(share, share.m_wanted))
            return;
        m_waiting.erase(oldest);
        std::exchange(share.m_call, nullptr)();
    }
}

void Budget::DropKept()
{
    // The last one is the one that asks for room: an answer larger than the budget goes out as well.
    while (m_used > m_total && m_kept.size() > 1)
    {
        Share& longest = *m_kept.front();
        m_kept.pop_front();
        Set(longest, 0);
        std::exchange(longest.m_call, nullptr)();
    }
}

} // namespace tarno::osa
