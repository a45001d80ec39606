#include "store/MergedDocuments.h"

#include <algorithm>
#include <utility>

namespace analytics
{

std::string MergedDocuments::Get(int profile, Configurations stored, const Merge& merge)
{
    if (const Kept kept = Find(profile); kept && kept->stored == stored)
        return kept->text;
    std::string text = merge(stored);
    std::size_t bytes = text.size();
    for (const StoredConfiguration& configuration : stored)
        bytes += configuration.id.size() + configuration.document.size();
    Keep(std::make_shared<const Document>(Document{profile, std::move(stored), text, bytes}));
    return text;
}

MergedDocuments::Kept MergedDocuments::Find(int profile)
{
    const platform::Hold hold(m_lock);
    const auto found =
        std::ranges::find_if(m_kept, [profile](const Kept& kept) { return kept->profile == profile; });
    if (found == m_kept.end())
        return nullptr;
    m_kept.splice(m_kept.begin(), m_kept, found);
    return m_kept.front();
}

void MergedDocuments::Keep(const Kept& document)
{
    const platform::Hold hold(m_lock);
    const auto isOlder = [&](const Kept& kept) { return kept->profile == document->profile; };
    m_kept.push_front(document);
    m_bytes += document->bytes;
    const auto older = std::find_if(std::next(m_kept.begin()), m_kept.end(), isOlder);
    if (older != m_kept.end())
    {
        m_bytes -= (*older)->bytes;
        m_kept.erase(older);
    }
    for (; m_kept.size() > kMost || m_bytes > kMostBytes; m_kept.pop_back())
        m_bytes -= m_kept.back()->bytes;
}

} // namespace analytics
