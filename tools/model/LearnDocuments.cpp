// Writes what this program knows of the documents, as C++: asks the converters, with the plug-ins of the
// product and a profile store of its own, what they keep of which document.
//
//   learn-documents SETTINGS PLUGINS STATE FILE

#include "Learner.h"
#include "ModelText.h"

#include <ProfileDocConverter.h>

#include <analytics/Platform.h>
#include <analytics/PluginManager.h>
#include <analytics/ProfileManager.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iostream>
#include <memory>

namespace model
{
namespace
{

using client::DocumentModel;
using profile_conversion::Factory;
using profile_conversion::ProfileDocConverter;
using profile_conversion::ProfileParameters;

std::unique_ptr<ProfileDocConverter> ConverterOf(const std::string& id)
{
    return std::unique_ptr<ProfileDocConverter>(Factory::CreateConverter(id));
}

// Stores and reads as the service does.
class Profile
{
  public:
    Profile() { m_profiles.CreateProfile(m_id, "Profile"); }

    std::string Behavior(const std::string& rule, const std::string& document)
    {
        ProfileParameters parameters;
        const auto converter = ConverterOf(rule);
        const std::string config = converter->FromVarloToOnvif(document, parameters);
        std::string engine;
        std::string engineConfig;
        if (converter->AdditionalComponent(engine, engineConfig))
            m_profiles.SetEngineConfig(m_id, engine, engineConfig);
        m_profiles.SetRuleConfig(m_id, rule, config, parameters.Active());
        return ConverterOf(rule)->FromOnvifToVarlo(m_profiles.GetConfig(m_id), parameters);
    }

    std::string Scene(const std::string& engine, const std::string& document)
    {
        ProfileParameters parameters;
        m_profiles.SetEngineConfig(m_id, engine, ConverterOf(engine)->FromVarloToOnvif(document, parameters));
        std::string config;
        m_profiles.GetEngineConfig(m_id, engine, config);
        // The preset is the camera's, and a different one at each reading.
        parameters.CameraPreset("preset " + std::to_string(++m_readings));
        return ConverterOf(engine)->FromOnvifToVarlo(config, parameters);
    }

  private:
    analytics::ProfileManager m_profiles;
    int m_id = 0;
    int m_readings = 0;
};

// "urn:…:StoppedVehicle:1" is called "stopped-vehicle", and "LoiteringDetection" is "loitering".
std::string NameOf(const std::string& alias)
{
    const std::size_t end = alias.rfind(':');
    const std::size_t start = alias.rfind(':', end - 1) + 1;
    std::string name;
    for (const char c : alias.substr(start, end - start))
    {
        if (std::isupper(static_cast<unsigned char>(c)) != 0 && !name.empty())
            name += '-';
        name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    constexpr std::string_view kNothingSaid = "-detection";
    if (name.ends_with(kNothingSaid))
        name.erase(name.size() - kNothingSaid.size());
    return name;
}

DocumentModel Describe(const analytics::Manifest& manifest, const Convert& convert, const std::string& bare)
{
    Answers answers;
    Ask(convert, bare, answers);
    return {NameOf(manifest.Alias()),       manifest.Id(), manifest.Alias(), manifest.Name(),
            manifest.FixedCameraPosition(), Learn(answers)};
}

std::vector<DocumentModel> Behaviors(Profile& profile)
{
    analytics::ManifestArray manifests;
    analytics::PluginManager().GetRulesManifests(manifests);
    std::vector<DocumentModel> models;
    for (const analytics::Manifest& manifest : manifests)
        if (ConverterOf(manifest.Id()) != nullptr)
            models.push_back(Describe(
                manifest,
                [&](const std::string& document) { return profile.Behavior(manifest.Id(), document); },
                "<behavior id='" + manifest.Id() + "' active='1'/>"));
    std::sort(models.begin(), models.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return models;
}

DocumentModel Scene(Profile& profile)
{
    analytics::ManifestArray manifests;
    analytics::PluginManager().GetEnginesManifests(manifests);
    const auto scene = std::find_if(manifests.begin(), manifests.end(),
                                    [](const analytics::Manifest& manifest)
                                    { return ConverterOf(manifest.Id()) != nullptr; });
    if (scene == manifests.end())
        throw std::runtime_error("No engine has a converter");
    DocumentModel model = Describe(
        *scene, [&](const std::string& document) { return profile.Scene(scene->Id(), document); },
        std::string("<analyticProfile name='") + kProfileName + "'/>");
    model.name = "scene";
    model.title = "Scene";
    return model;
}

} // namespace
} // namespace model

int main(int, char** argv)
{
    try
    {
        analytics::platform::Configuration configuration;
        configuration.settingsFile = argv[1];
        configuration.pluginFolder = argv[2];
        configuration.stateFolder = argv[3];
        analytics::platform::Configure(configuration);
        model::Profile profile;
        const auto behaviors = model::Behaviors(profile);
        std::ofstream file(argv[4]);
        file << model::AsSource(behaviors, model::Scene(profile)) << std::flush;
        return file ? 0 : 1;
    }
    catch (const std::exception& error)
    {
        std::cerr << "learn-documents: " << error.what() << '\n';
        return 1;
    }
}
