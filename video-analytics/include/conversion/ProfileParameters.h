#pragma once

#include <string>

namespace profile_conversion
{

// What travels with a conversion beside the document.
class ProfileParameters
{
  public:
    // Of the profile; used by the scene alone.
    std::string CameraPreset() const { return m_cameraPreset; }
    void CameraPreset(const std::string& preset) { m_cameraPreset = preset; }
    std::string ProfileName() const { return m_profileName; }
    void ProfileName(const std::string& name) { m_profileName = name; }
    // Whether the behavior is to be active after the conversion.
    bool Active() const { return m_active; }
    void Active(bool active) { m_active = active; }

  private:
    std::string m_cameraPreset;
    std::string m_profileName;
    bool m_active = false;
};

} // namespace profile_conversion
