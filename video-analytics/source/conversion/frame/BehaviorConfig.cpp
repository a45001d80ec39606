#include <frame/BehaviorConfig.h>

#include <analytics/PluginManager.h>
#include <analytics/Settings.h>

namespace profile_conversion::frame
{
namespace
{
analytics::Manifest ManifestOf(const std::string& id)
{
    analytics::Manifest manifest;
    analytics::PluginManager().GetManifest(manifest, id);
    return manifest;
}
} // namespace

std::string AliasOf(const std::string& id) { return ManifestOf(id).Alias(); }

std::string EngineOf(const std::string& id)
{
    for (const std::string& dependency : ManifestOf(id).Dependencies())
        if (dependency.find(analytics::Settings::EnginePattern()) != std::string::npos)
            return dependency;
    return {};
}

} // namespace profile_conversion::frame
