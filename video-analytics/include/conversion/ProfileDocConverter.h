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

// Turns what clients read and write of one behavior, or of the scene, into what the platform stores,
// and back. A converter serves one request and one thread. An empty result means that the document
// couldn't be converted; exceptions come out of the platform only.
class ProfileDocConverter
{
  public:
    virtual ~ProfileDocConverter() = default;

    // The engine document. A behavior sets Active() of `params` from the document, the scene the profile
    // name and the camera preset; `params` stays as it is if the document can't be read.
    virtual std::string FromVarloToOnvif(const std::string& varloDoc, ProfileParameters& params) = 0;
    // The client's document, out of the engine document of a whole profile. The scene takes the name and
    // the preset from `params`, the behaviors nothing.
    virtual std::string FromOnvifToVarlo(const std::string& onvifDoc, const ProfileParameters& params) = 0;
    // After FromVarloToOnvif(): the identifier and the configuration of the analytics engine that the
    // behavior has settings in. False if there is none; a converter with an engine then still assigns.
    virtual bool AdditionalComponent(std::string& /*id*/, std::string& /*config*/) const { return false; }
};

// Makes converters.
class Factory
{
  public:
    // A converter for a rule or engine identifier, or for the alias of a rule; null if there is none.
    // The caller owns it. The search order is fixed, and each converter that is passed over costs a
    // look-up of its alias.
    static ProfileDocConverter* CreateConverter(const std::string& id);
};

} // namespace profile_conversion
