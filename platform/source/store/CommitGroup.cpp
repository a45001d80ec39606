#include "store/CommitGroup.h"

#include <utility>

namespace analytics::platform
{
CommitGroup::Turn::Turn(CommitGroup& group, Member& member) : m_group(group)
{
    std::shared_ptr<Batch> batch;
    bool first = false;
    bool called = false;
    {
        const MutexLock hold(group.m_lock);
        first = !group.m_next;
        batch = first ? std::make_shared<Batch>() : group.m_next;
        batch->members.push_back(&member);
        called = !std::exchange(group.m_busy, true);
        if (!called)
            group.m_next = batch;
    }
    if (!first)
    {
        batch->served.Wait();
        return;
    }
    if (!called)
    {
        batch->called.Wait();
        const MutexLock hold(group.m_lock);
        group.m_next.reset();
    }
    m_led = std::move(batch);
}

CommitGroup::Turn::~Turn()
{
    if (!m_led)
        return;
    std::shared_ptr<Batch> next;
    {
        const MutexLock hold(m_group.m_lock);
        next = m_group.m_next;
        m_group.m_busy = next != nullptr;
    }
    if (next)
        next->called.Set();
    if (m_led->members.size() > 1)
        m_led->served.Set();
}

const std::vector<CommitGroup::Member*>& CommitGroup::Turn::Members() const
{
    static const std::vector<Member*> kNone;
    return m_led ? m_led->members : kNone;
}

std::size_t CommitGroup::Waiting()
{
    const MutexLock hold(m_lock);
    return m_next ? m_next->members.size() : 0;
}

} // namespace analytics::platform
