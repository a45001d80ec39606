#include "store/ProfileConfigurations.h"

#include "store/ProfileDocument.h"
#include "store/StoreConnection.h"

namespace analytics
{

std::vector<StoredConfiguration> ConfigurationsIn(platform::StoreConnection& connection, int profile)
{
    std::vector<StoredConfiguration> all;
    platform::Query row(connection,
                        "SELECT kind, plugin, document, active FROM configuration"
                        " WHERE profile = ? ORDER BY kind, plugin",
                        profile);
    while (row.Next())
        all.push_back({static_cast<PluginType>(row.Number(0)), row.Text(1), row.Text(2), row.Flag(3)});
    return all;
}

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

} // namespace analytics
