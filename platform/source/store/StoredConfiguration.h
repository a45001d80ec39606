#pragma once

#include <analytics/Manifest.h>

#include <string>

namespace analytics
{

// A rule or engine as a profile holds it.
struct StoredConfiguration
{
    PluginType kind = RulePlugin; // or EnginePlugin
    std::string id;
    std::string document;
    bool active = false;

    bool operator==(const StoredConfiguration&) const = default;
};

} // namespace analytics
