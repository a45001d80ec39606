#pragma once

#include <ProfileDocConverter.h>

#include <string>

namespace profile_conversion
{

// The scene between its two forms. A scene has no additional component.
class SceneAnalyzerConverter : public ProfileDocConverter
{
  public:
    static bool CanConvert(const std::string& id); // the engine's identifier itself: a scene has no alias

    // Writes the name of the client's document to `params`, and an empty preset; neither when the text
    // can't be read. The active flag plays no part in either direction.
    std::string FromVarloToOnvif(const std::string& varloDoc, ProfileParameters& params) override;
    // The name and the preset come from `params` alone.
    std::string FromOnvifToVarlo(const std::string& onvifDoc, const ProfileParameters& params) override;
};

} // namespace profile_conversion
