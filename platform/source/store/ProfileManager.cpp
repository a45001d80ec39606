#include <analytics/ProfileManager.h>

#include <analytics/Faults.h>

#include "Runtime.h"
#include "store/ProfileStore.h"
#include "store/StoredText.h"

#include <iterator>

namespace analytics
{
namespace
{
using platform::NameRefusal;
using platform::PresetRefusal;

struct Command
{
    ProfileSwitch which;
    bool on;
};
// The number of a command is its place.
constexpr Command kCommands[] = {
    {ProfileSwitch::kAnalytics, false},
    {ProfileSwitch::kAnalytics, true},
    {ProfileSwitch::kMD, false},
    {ProfileSwitch::kMD, true},
};

// A profile that doesn't exist is said before anything else that is wrong.
void Refuse(const ProfileStore& store, int profileId, const std::string& refusal)
{
    if (refusal.empty())
        return;
    store.Require(profileId);
    throw ClientFault(refusal);
}
} // namespace

ProfileManager::ProfileManager()
    : m_store(std::make_unique<ProfileStore>(platform::CurrentConfiguration().stateFolder))
{
}

ProfileManager::~ProfileManager() = default;

bool ProfileManager::CreateProfile(int& profileId, const std::string& name)
{
    if (const std::string refusal = NameRefusal(name); !refusal.empty())
        throw ClientFault(refusal);
    profileId = m_store->Create(name);
    return true;
}

bool ProfileManager::DeleteProfile(int profileId)
{
    m_store->Delete(profileId);
    return true;
}

bool ProfileManager::ExecuteProfile(int profileId)
{
    m_store->Activate(profileId);
    return true;
}

bool ProfileManager::StopProfile(int profileId)
{
    if (profileId == INVALID_PROFILE_ID)
        m_store->DeactivateAny();
    else
        m_store->Deactivate(profileId);
    return true;
}

bool ProfileManager::AlgorithmControl(int command)
{
    if (command < 0 || command >= std::ssize(kCommands))
        throw ClientFault("Unknown algorithm command " + std::to_string(command));
    m_store->Switch(kCommands[command].which, kCommands[command].on);
    return true;
}

bool ProfileManager::GetActiveProfile(int& profileId) const
{
    profileId = m_store->Active().value_or(profileId);
    return true;
}

bool ProfileManager::GetProfileList(std::vector<ProfileSummary>& list) const
{
    list = m_store->List();
    return true;
}

std::string ProfileManager::GetProfileName(int profileId)
{
    return m_store->Find(profileId).value_or(ProfileSummary()).name;
}

std::string ProfileManager::GetCameraPreset(int profileId)
{
    return m_store->Find(profileId).value_or(ProfileSummary()).preset;
}

bool ProfileManager::SetProfileName(int profileId, const std::string& name)
{
    Refuse(*m_store, profileId, NameRefusal(name));
    m_store->Describe(profileId, name, std::nullopt);
    return true;
}

bool ProfileManager::SetCameraPreset(int profileId, const std::string& preset)
{
    Refuse(*m_store, profileId, PresetRefusal(preset));
    m_store->Describe(profileId, std::nullopt, preset);
    return true;
}

bool ProfileManager::GetMDActiveState() { return m_store->On(ProfileSwitch::kMD); }

} // namespace analytics
