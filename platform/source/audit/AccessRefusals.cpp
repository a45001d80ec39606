#include "audit/AccessRefusals.h"

namespace analytics::platform
{

std::vector<AuditEntry> AccessRefusals::Add(AuditEntry entry, Clock::time_point now)
{
    std::vector<AuditEntry> told = Due(now);
    std::string& peer = entry.caller->peer;
    if (m_windows.size() >= kMost && !m_windows.contains(peer))
        peer.clear();
    const auto [place, first] = m_windows.try_emplace(peer, Window{entry, now + kWindow});
    if (first)
    {
        told.push_back(std::move(entry));
        return told;
    }
    entry.count = place->second.last.count + 1;
    place->second.last = std::move(entry);
    return told;
}

std::vector<AuditEntry> AccessRefusals::Due(Clock::time_point now)
{
    std::vector<AuditEntry> told;
    for (auto& [peer, window] : m_windows)
        if (window.end <= now && window.last.count > 0)
        {
            told.push_back(window.last);
            window.last.count = 0;
            window.end = now + kWindow;
        }
    std::erase_if(m_windows, [now](const auto& window) { return window.second.end <= now; });
    return told;
}

std::vector<AuditEntry> AccessRefusals::Rest()
{
    std::vector<AuditEntry> told;
    for (const auto& [peer, window] : m_windows)
        if (window.last.count > 0)
            told.push_back(window.last);
    m_windows.clear();
    return told;
}

} // namespace analytics::platform
