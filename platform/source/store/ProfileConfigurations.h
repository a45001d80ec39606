#pragma once

#include <analytics/Manifest.h>

#include <string>
#include <vector>

namespace analytics
{

namespace platform
{
class StoreConnection;
}

// A rule or engine as a profile holds it.
struct StoredConfiguration
{
    PluginType kind = RulePlugin; // or EnginePlugin
    std::string id;
    std::string document;
    bool active = false;
};

// All that a profile holds.
std::vector<StoredConfiguration> ConfigurationsIn(platform::StoreConnection& connection, int profile);
// The engine document of a profile that holds these.
std::string Merge(const std::vector<StoredConfiguration>& configurations);

} // namespace analytics
