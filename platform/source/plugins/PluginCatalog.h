#pragma once

#include "plugins/Plugin.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace analytics::platform
{

// The plug-ins as they were found, in their order. Once it is filled, any thread.
class PluginCatalog
{
  public:
    // False if another plug-in already answers to its Id() or Alias(); `problem` then says so.
    bool Add(Plugin plugin, PluginProblem& problem);

    // By Id() or Alias(); null if there is none.
    const Plugin* Find(const std::string& id) const;
    const std::vector<Plugin>& All() const { return m_plugins; }

  private:
    std::vector<Plugin> m_plugins;
    std::unordered_map<std::string, std::size_t> m_index;
};

} // namespace analytics::platform
