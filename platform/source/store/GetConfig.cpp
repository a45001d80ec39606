#include <analytics/ProfileManager.h>

#include "store/ProfileDocument.h"
#include "store/ProfileStore.h"

namespace analytics
{

std::string ProfileManager::GetConfig(int profileId)
{
    std::vector<StoredRule> rules;
    std::vector<StoredEngine> engines;
    for (const StoredConfiguration& stored : m_store->Configurations(profileId))
        if (stored.kind == RulePlugin)
            rules.push_back({stored.id, stored.document, stored.active});
        else
            engines.push_back({stored.id, stored.document});
    return MergeProfile(rules, engines);
}

} // namespace analytics
