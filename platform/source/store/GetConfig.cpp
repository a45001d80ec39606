#include <analytics/ProfileManager.h>

#include "store/ProfileDocument.h"
#include "store/ProfileStore.h"

namespace analytics
{
namespace
{
std::string Merge(const std::vector<StoredConfiguration>& configurations)
{
    std::vector<StoredRule> rules;
    std::vector<StoredEngine> engines;
    for (const StoredConfiguration& stored : configurations)
        if (stored.kind == RulePlugin)
            rules.push_back({stored.id, stored.document, stored.active});
        else
            engines.push_back({stored.id, stored.document});
    return MergeProfile(rules, engines);
}
} // namespace

std::string ProfileManager::GetConfig(int profileId)
{
    return m_store->Merged().Get(profileId, m_store->Configurations(profileId), Merge);
}

} // namespace analytics
