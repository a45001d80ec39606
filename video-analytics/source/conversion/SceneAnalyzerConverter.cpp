#include <SceneAnalyzerConverter.h>

#include <SceneAnalyzerConfig.h>

namespace profile_conversion
{
using namespace sceneanalyzer;

bool SceneAnalyzerConverter::CanConvert(const std::string& id) { return id == Config::Id(); }

std::string SceneAnalyzerConverter::FromVarloToOnvif(const std::string& varloDoc, ProfileParameters& params)
{
    std::string result;
    Config config;
    VarloDoc varloParser;
    if (!varloParser.DocToConfig(varloDoc, config))
        return result;
    params.ProfileName(config.ProfileName());
    // Always empty, whatever the client sent: a preset goes out to clients and isn't taken in from them.
    params.CameraPreset(config.CameraPreset());
    OnvifDoc onvifParser;
    onvifParser.ConfigToDoc(config, result); // leaves the result empty on failure
    return result;
}

std::string SceneAnalyzerConverter::FromOnvifToVarlo(const std::string& onvifDoc,
                                                     const ProfileParameters& params)
{
    std::string result;
    Config config;
    if (!OnvifDoc().DocToConfig(onvifDoc, config)) // whose tree isn't needed any more
        return result;
    // The engine document holds neither.
    config.ProfileName(params.ProfileName());
    config.CameraPreset(params.CameraPreset());
    VarloDoc varloParser;
    varloParser.ConfigToDoc(config, result);
    return result;
}

} // namespace profile_conversion
