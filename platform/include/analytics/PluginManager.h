#pragma once

#include <analytics/Manifest.h>

#include <cstdint>
#include <string>

namespace analytics
{

// The installed plug-ins, as the plug-in folder holds them at the moment of each call. Objects hold
// nothing and cost nothing; every one sees the same plug-ins. Any operation may be called from any
// thread. `id` is an Id() or an Alias(). A plug-in whose manifest can't be used doesn't exist, and
// neither does any without a folder; standard error says so once. Throws AnalyticsFault if there is a
// folder and it can't be read.
class PluginManager
{
  public:
    // Fills `manifest`; leaves it as it came in if there is no such plug-in.
    void GetManifest(Manifest& manifest, const std::string& id) const;

    // Append manifests in bytewise order of the plug-ins' folder names.
    void GetRulesManifests(ManifestArray& manifests) const;
    void GetEnginesManifests(ManifestArray& manifests) const;
    void GetManifests(ManifestArray& manifests) const;
    void GetManifests(ManifestArray& manifests, PluginType type) const;

    // Default configuration in engine document form, and in the clients' form. Empty if the plug-in
    // doesn't exist or delivers none. Throws AnalyticsFault if its file is there and can't be read.
    std::string GetDefaultConfiguration(const std::string& id) const;
    std::string GetVarloDefaultConfiguration(const std::string& id) const;

    // The plug-in's folder; empty if there is no such plug-in.
    std::string PluginHome(const std::string& id) const;
    // The plug-in's loadable module, `factory.so` in its folder; empty if it has none.
    std::string GetFactory(const std::string& id) const;
    // 0 if there is no such plug-in.
    std::uint32_t GetResourceRequirement(const std::string& id) const;
};

} // namespace analytics
