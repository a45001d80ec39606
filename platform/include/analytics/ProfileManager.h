#pragma once

#include <memory>
#include <string>
#include <vector>

namespace analytics
{

// One line of the profile list.
struct ProfileSummary
{
    ProfileSummary() : id(0), active(false) {}
    ProfileSummary(int profileId, const std::string& profileName, const std::string& cameraPreset,
                   bool isActive)
        : id(profileId), name(profileName), preset(cameraPreset), active(isActive)
    {
    }

    int id;
    std::string name;
    std::string preset; // empty if the profile has none
    bool active;        // true for the profile that is running
};

// The stored profiles and the running one. Every operation that changes something is one transaction
// and durable when it returns. Any operation may be called from any thread.
//
// `id` is the Id() of a rule or an engine plug-in, never an alias. True means done. What a client got
// wrong is a ClientFault (no such profile, a name that can't be stored); a store that can't be read or
// written is an AnalyticsFault. After either nothing has changed.
class ProfileManager
{
  public:
    static constexpr int INVALID_PROFILE_ID = -1;

    // Opens the store in the state folder, and makes both where missing. Throws AnalyticsFault if that
    // fails or if another process has the store open.
    ProfileManager();
    ~ProfileManager();
    ProfileManager(const ProfileManager&) = delete;
    ProfileManager& operator=(const ProfileManager&) = delete;

    // Identifiers count up from 1 and are never used again. A name has at most 255 bytes of UTF-8, may
    // be empty and need not be unique.
    bool CreateProfile(int& profileId, const std::string& name);
    bool DeleteProfile(int profileId); // stops it first if it is active
    bool ExecuteProfile(int profileId);
    bool StopProfile(int profileId); // -1: whichever is active. True also if it isn't the active one
    // 0 stops the analytics, 1 starts them, 2 switches the MD function off, 3 on.
    bool AlgorithmControl(int command);

    bool GetActiveProfile(int& profileId) const;                  // leaves `profileId` if none is active
    bool GetProfileList(std::vector<ProfileSummary>& list) const; // in the order of creation
    std::string GetProfileName(int profileId);                    // empty if there is no such profile
    std::string GetCameraPreset(int profileId);                   // the same
    bool SetProfileName(int profileId, const std::string& name);
    bool SetCameraPreset(int profileId, const std::string& preset);

    // The engine document of the whole profile: every rule and engine configuration, merged. Empty if
    // the profile doesn't exist or holds none.
    std::string GetConfig(int profileId);

    // Each list replaces what the vector held; false, and the vector as it was, if there is no such profile.
    bool GetRules(int profileId, std::vector<std::string>& rules) const; // in the order of identifiers
    bool GetActiveRules(int profileId, std::vector<std::string>& rules); // those stored as active
    bool GetRuleConfig(int profileId, const std::string& id, std::string& config) const; // false if none
    bool SetRuleConfig(int profileId, const std::string& id, const std::string& config, bool active);
    // The plug-in's default configuration, not active. ClientFault if there is no such plug-in or the
    // profile has the rule already, AnalyticsFault if the plug-in delivers no configuration.
    bool AddRule(int profileId, const std::string& id);
    bool DeleteRule(int profileId, const std::string& id);

    bool GetEngines(int profileId, std::vector<std::string>& engines) const; // in the order of identifiers
    bool GetEngineConfig(int profileId, const std::string& id, std::string& config); // false if there is none
    bool SetEngineConfig(int profileId, const std::string& id, const std::string& config);
    // Takes over a name and a preset as well; an empty one keeps what the profile has.
    bool SetEngineConfig(int profileId, const std::string& id, const std::string& config,
                         const std::string& profileName, const std::string& cameraPreset);
    bool AddEngine(int profileId, const std::string& id); // as AddRule
    bool DeleteEngine(int profileId, const std::string& id);

    bool GetMDActiveState(); // the MD function, as last switched by AlgorithmControl; off at first
    // True if rule `id` could be active beside the active rules of the profile: their costs and those
    // of the plug-ins that they all depend on, each counted once, stay within Settings::MaxResource().
    bool HasEnoughResource(int profileId, const std::string& id);

  private:
    std::unique_ptr<class ProfileStore> m_store;
};

} // namespace analytics
