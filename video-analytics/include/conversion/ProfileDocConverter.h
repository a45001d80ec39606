#pragma once

#include <ProfileParameters.h>

#include <string>

namespace profile_conversion
{

// Turns what clients read and write of one behavior, or of the scene, into what the platform stores,
// and back. A converter serves one request and one thread. An empty result means that the document
// couldn't be converted; exceptions come out of the platform only.
class ProfileDocConverter
{
  public:
    virtual ~ProfileDocConverter();

    // The engine document. A behavior sets Active() of `params` from the document, the scene the profile
    // name and the camera preset; `params` stays as it is if the document can't be read.
    virtual std::string FromVarloToOnvif(const std::string& varloDoc, ProfileParameters& params) = 0;
    // The client's document, out of the engine document of a whole profile. The scene takes the name and
    // the preset from `params`, the behaviors nothing.
    virtual std::string FromOnvifToVarlo(const std::string& onvifDoc, const ProfileParameters& params) = 0;
    // After FromVarloToOnvif(): the identifier and the configuration of the analytics engine that the
    // behavior has settings in. False if there is none; a converter with an engine then still assigns.
    virtual bool AdditionalComponent(std::string& id, std::string& config) const;
};

} // namespace profile_conversion
