#include <analytics/PluginManager.h>

#include <analytics/Faults.h>

#include "plugins/PluginFolder.h"
#include "request/Request.h"
#include "settings/Configuration.h"
#include "threads/PerPath.h"

namespace analytics
{
namespace
{
using platform::kPluginTypes;
using platform::Plugin;
using platform::PluginCatalog;
using platform::PluginText;

std::shared_ptr<const PluginCatalog> Catalog()
{
    static platform::PerPath<platform::PluginFolder> folders;
    thread_local platform::OncePerRequest<const PluginCatalog> catalog;
    return catalog.Get([] { return folders.At(platform::CurrentConfiguration().pluginFolder)->Current(); });
}

// What `value` makes of plug-in `id`; what an empty T is if there is no such plug-in.
template <class T, class Value>
T Of(const std::string& id, Value value)
{
    const auto catalog = Catalog();
    const Plugin* const plugin = catalog->Find(id);
    return plugin != nullptr ? value(*plugin) : T();
}

std::string TextOf(const std::string& id, PluginText Plugin::*file)
{
    return Of<std::string>(id,
                           [file](const Plugin& plugin)
                           {
                               const PluginText& content = plugin.*file;
                               if (!content.failure.empty())
                                   throw AnalyticsFault(content.failure);
                               return content.text;
                           });
}
} // namespace

void PluginManager::GetManifest(Manifest& manifest, const std::string& id) const
{
    const auto catalog = Catalog();
    if (const Plugin* const plugin = catalog->Find(id))
        manifest = plugin->manifest;
}

void PluginManager::GetRulesManifests(ManifestArray& manifests) const { GetManifests(manifests, RulePlugin); }
void PluginManager::GetEnginesManifests(ManifestArray& manifests) const
{
    GetManifests(manifests, EnginePlugin);
}
void PluginManager::GetManifests(ManifestArray& manifests) const { GetManifests(manifests, AllPlugin); }

void PluginManager::GetManifests(ManifestArray& manifests, PluginType type) const
{
    const auto catalog = Catalog();
    const std::string wanted = type < kPluginTypes.size() ? kPluginTypes[type] : "";
    manifests.reserve(manifests.size() + catalog->All().size());
    for (const Plugin& plugin : catalog->All())
        if (type == AllPlugin || plugin.manifest.Type() == wanted)
            manifests.push_back(plugin.manifest);
}

std::string PluginManager::GetDefaultConfiguration(const std::string& id) const
{
    return TextOf(id, &Plugin::engineDefault);
}

std::string PluginManager::GetVarloDefaultConfiguration(const std::string& id) const
{
    return TextOf(id, &Plugin::clientsDefault);
}

std::string PluginManager::PluginHome(const std::string& id) const
{
    return Of<std::string>(id, [](const Plugin& plugin) { return plugin.manifest.Home(); });
}

std::string PluginManager::GetFactory(const std::string& id) const
{
    return Of<std::string>(id, [](const Plugin& plugin) { return plugin.factory; });
}

std::uint32_t PluginManager::GetResourceRequirement(const std::string& id) const
{
    return Of<std::uint32_t>(id, [](const Plugin& plugin) { return plugin.manifest.ResourceRequirement(); });
}

} // namespace analytics
