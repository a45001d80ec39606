#pragma once

#include <analytics/ProfileSummary.h>

#include "store/EngineView.h"
#include "store/ProfileConfigurations.h"
#include "store/ReadCache.h"
#include "store/Store.h"
#include "store/StoreBackup.h"

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace analytics
{

// What is on or off for the camera as a whole.
enum class ProfileSwitch
{
    Analytics, // on at first
    MD         // off at first
};

// The inside of ProfileManager: the profiles as the database holds them. Every operation is one transaction.
// ClientFault for a profile that doesn't exist and for one that would hold more than the settings allow,
// AnalyticsFault for what the database refuses. Any thread.
class ProfileStore
{
  public:
    // Throws AnalyticsFault if the store can't be opened or another process has it. Says on standard error
    // which profiles hold more than the settings allow.
    explicit ProfileStore(const std::string& folder);
    ~ProfileStore();

    int Create(const std::string& name);
    void Delete(int profile);
    void Activate(int profile);
    // Stops the profile if it is the active one; without one, whichever is active.
    void Deactivate(std::optional<int> profile);
    std::optional<int> Active();

    std::vector<ProfileSummary> List(); // in the order of creation
    std::optional<ProfileSummary> Find(int profile);
    void Require(int profile);
    // An empty optional keeps what the profile has.
    void Describe(int profile, const std::optional<std::string>& name,
                  const std::optional<std::string>& preset);

    void Switch(ProfileSwitch which, bool on);
    bool IsOn(ProfileSwitch which);

    // Nothing if there is no such profile.
    std::optional<std::vector<std::string>> Ids(int profile, PluginType kind, bool onlyActive);
    std::optional<std::string> Document(int profile, PluginType kind, const std::string& id);
    // The engine document of the whole profile; empty if it holds nothing or there is no such profile.
    // AnalyticsFault if it holds more than the settings allow.
    std::string Merged(int profile);

    // All of it or nothing. An empty name or preset keeps what the profile has.
    void Put(int profile, const std::vector<StoredConfiguration>& configurations,
             const std::string& name = "", const std::string& preset = "");
    bool Add(int profile, const StoredConfiguration& configuration);  // false if the profile holds it already
    bool Remove(int profile, PluginType kind, const std::string& id); // false if it doesn't hold it

    // Whether the profile could hold that as well, at most: ClientFault if not.
    void RequireRoom(int profile, const StoredConfiguration& configuration);

  private:
    void BeginReading(int profile, std::int64_t bytes);
    void CountProfiles();

    // On a profile, or on the camera as a whole.
    void Change(std::optional<int> profile, const platform::Store::Operation& operation);

    platform::LastGoodCopy m_copy;
    platform::Store m_store;
    EngineView m_engine;
    platform::ReadCache<std::vector<ProfileSummary>> m_list{m_store};
    platform::ReadCache<std::optional<int>> m_active{m_store};
    platform::ReadCache<bool> m_switches{m_store}; // by ProfileSwitch
    platform::ReadCache<std::string> m_merged{m_store};
    platform::ReadCache<std::optional<ProfileSummary>> m_found{m_store};
    platform::ReadCache<std::optional<std::string>, std::tuple<int, PluginType, std::string>> m_documents{
        m_store};
};

} // namespace analytics
