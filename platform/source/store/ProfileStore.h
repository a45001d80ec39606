#pragma once

#include <analytics/ProfileSummary.h>

#include "store/KeptReading.h"
#include "store/MergedDocuments.h"
#include "store/Store.h"
#include "store/StoredConfiguration.h"

#include <optional>
#include <string>
#include <vector>

namespace analytics
{

// What is on or off for the camera as a whole.
enum class ProfileSwitch
{
    kAnalytics, // on at first
    kMD         // off at first
};

// The profiles as the database holds them. Every operation is one transaction. ClientFault for a
// profile that doesn't exist and for what a profile doesn't hold, AnalyticsFault for what the database
// refuses. `kind` is RulePlugin or EnginePlugin. Any thread.
class ProfileStore
{
  public:
    // Throws AnalyticsFault if the store can't be opened or another process has it.
    explicit ProfileStore(const std::string& folder) : m_store(folder) {}

    int Create(const std::string& name);
    void Delete(int profile);
    void Activate(int profile);
    void Deactivate(int profile); // nothing to do if it isn't the active one
    void DeactivateAny();
    std::optional<int> Active() const;

    std::vector<ProfileSummary> List() const; // in the order of creation
    std::optional<ProfileSummary> Find(int profile) const;
    void Require(int profile) const;
    // An empty optional keeps what the profile has.
    void Describe(int profile, const std::optional<std::string>& name,
                  const std::optional<std::string>& preset);

    void Switch(ProfileSwitch which, bool on);
    bool On(ProfileSwitch which) const;

    // Nothing if there is no such profile.
    std::optional<std::vector<std::string>> Ids(int profile, PluginType kind, bool onlyActive) const;
    std::optional<std::string> Document(int profile, PluginType kind, const std::string& id) const;
    // All rules and engines that the profile holds, engines first, each kind in the order of the
    // identifiers. Empty if there is no such profile.
    std::vector<StoredConfiguration> Configurations(int profile) const;

    void Put(int profile, const StoredConfiguration& configuration);
    // The same with a name and a preset; an empty one keeps what the profile has.
    void Put(int profile, const StoredConfiguration& configuration, const std::string& name,
             const std::string& preset);
    bool Add(int profile, const StoredConfiguration& configuration);  // false if the profile holds it already
    bool Remove(int profile, PluginType kind, const std::string& id); // false if it doesn't hold it

    MergedDocuments& Merged() { return m_merged; }

  private:
    mutable platform::Store m_store; // reading may open it anew
    MergedDocuments m_merged;
    mutable platform::KeptReading<std::vector<ProfileSummary>> m_list;
    mutable platform::KeptReading<std::optional<int>> m_active;
    mutable platform::KeptReading<bool> m_switches[2]; // in the order of ProfileSwitch
};

} // namespace analytics
