#include "plugins/PluginCatalog.h"

namespace analytics::platform
{

bool PluginCatalog::Add(Plugin plugin, PluginProblem& problem)
{
    const std::string names[] = {plugin.manifest.Id(), plugin.manifest.Alias()};
    for (const std::string& name : names)
    {
        const Plugin* const other = Find(name);
        if (other == nullptr)
            continue;
        problem = {plugin.manifest.Home() + ": the identifier " + name + " belongs to the plug-in in " +
                       other->manifest.Home() + ". This plug-in is left out.",
                   0};
        return false;
    }
    for (const std::string& name : names)
        if (!name.empty())
            m_index.emplace(name, m_plugins.size());
    m_plugins.push_back(std::move(plugin));
    return true;
}

const Plugin* PluginCatalog::Find(const std::string& id) const
{
    const auto found = m_index.find(id);
    return found == m_index.end() ? nullptr : &m_plugins[found->second];
}

} // namespace analytics::platform
