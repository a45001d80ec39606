#include "store/RuleCost.h"

#include <analytics/PluginManager.h>

#include <set>

namespace analytics
{

Manifest ManifestOf(const std::string& id)
{
    Manifest manifest;
    PluginManager().GetManifest(manifest, id);
    return manifest;
}

std::uint64_t CostOf(const std::vector<std::string>& rules)
{
    std::set<std::string> counted;
    std::uint64_t sum = 0;
    const auto add = [&](const Manifest& manifest)
    {
        if (counted.insert(manifest.Id()).second)
            sum += manifest.ResourceRequirement();
    };
    for (const std::string& rule : rules)
    {
        const Manifest manifest = ManifestOf(rule);
        add(manifest);
        for (const std::string& dependency : manifest.Dependencies())
            add(ManifestOf(dependency));
    }
    return sum;
}

} // namespace analytics
