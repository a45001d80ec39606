#include "store/CommitGroup.h"

#include <utility>

namespace analytics::platform
{

CommitGroup::Turn::Turn(CommitGroup& group, Member& member) : m_group(group)
{
    const Hold hold(group.m_lock);
    group.m_waiting.push_back(&member);
    while (!member.served && group.m_leader != nullptr && group.m_leader != &member)
        member.called.Wait(group.m_lock);
    if (member.served)
        return;
    group.m_leader = &member;
    m_members = std::exchange(group.m_waiting, {});
}

CommitGroup::Turn::~Turn()
{
    if (m_members.empty())
        return;
    const Hold hold(m_group.m_lock);
    for (Member* const member : m_members)
    {
        member->served = true;
        member->called.Wake();
    }
    m_group.m_leader = nullptr;
    if (m_group.m_waiting.empty())
        return;
    m_group.m_leader = m_group.m_waiting.front();
    m_group.m_waiting.front()->called.Wake();
}

std::size_t CommitGroup::Waiting()
{
    const Hold hold(m_lock);
    return m_waiting.size();
}

} // namespace analytics::platform
