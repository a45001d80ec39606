#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace analytics
{

// Numbers as in the `type` of a manifest: source, engine, rule, sink. AllPlugin selects every kind.
enum tagPluginType
{
    MediaSourcePlugin = 0,
    EnginePlugin = 1,
    RulePlugin = 2,
    EventSinkPlugin = 3,
    AllPlugin = 4
};
using PluginType = tagPluginType;

// What a plug-in says of itself, for whoever makes a Manifest.
struct ManifestFields
{
    std::string id;    // reverse-domain form, towards the platform
    std::string alias; // URN form, towards clients
    std::string name;  // shown to users
    std::string home;  // the plug-in's folder
    bool fixedCameraPosition = false;
    std::uint32_t resourceRequirement = 0;
    std::vector<std::string> dependencies;
    std::string type; // source, engine, rule or sink
    bool supportsAdvancedMode = false;
};

// The description of one plug-in. A value: a copy doesn't change when the plug-in does. One that no
// plug-in filled is not valid; its texts and lists are empty, its numbers 0 and its flags false. It is all in
// this header: nothing of it is asked of the platform's library.
class Manifest
{
  public:
    Manifest() = default;
    // Valid if the identifier isn't empty.
    explicit Manifest(ManifestFields fields) : m_fields(std::move(fields)) {}
    Manifest(const Manifest&) = default;
    Manifest(Manifest&&) noexcept = default;
    Manifest& operator=(const Manifest&) = default;
    Manifest& operator=(Manifest&&) noexcept = default;
    virtual ~Manifest() = default;

    // References live as long as the manifest.
    const std::string& Id() const { return m_fields.id; }
    const std::string& Alias() const { return m_fields.alias; }
    const std::string& Name() const { return m_fields.name; }
    const std::string& Home() const { return m_fields.home; }
    const std::string& Type() const { return m_fields.type; }
    // The Id() or Alias() of each plug-in that this one needs, in the order of the manifest file.
    std::vector<std::string> Dependencies() const { return m_fields.dependencies; }
    // What the plug-in costs of Settings::MaxResource(), in the same unit.
    std::uint32_t ResourceRequirement() const { return m_fields.resourceRequirement; }
    // True if the plug-in works only while the camera does not move.
    bool FixedCameraPosition() const { return m_fields.fixedCameraPosition; }
    bool SupportsAdvancedMode() const { return m_fields.supportsAdvancedMode; }
    bool Valid() const { return !m_fields.id.empty(); }

  private:
    ManifestFields m_fields;
};

using ManifestArray = std::vector<Manifest>;

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
