#include <frame/BehaviorConfig.h>

#include <analytics/PluginManager.h>

namespace profile_conversion::frame
{

std::string AliasOf(const std::string& id)
{
    const analytics::PluginManager plugins;
    analytics::Manifest manifest;
    plugins.GetManifest(manifest, id);
    return manifest.Alias();
}

} // namespace profile_conversion::frame
