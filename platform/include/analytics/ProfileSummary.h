#pragma once

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

} // namespace analytics
