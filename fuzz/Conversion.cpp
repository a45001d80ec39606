#include "Conversion.h"

#include "Expect.h"
#include "Installation.h"

#include "store/ProfileDocument.h"

#include <ProfileDocConverter.h>

#include <analytics/Document.h>
#include <analytics/PluginManager.h>

#include <memory>

namespace fuzzing
{
namespace
{
constexpr char kScene[] = "com.varlo.engine.sceneanalyzer";

std::unique_ptr<profile_conversion::ProfileDocConverter> Converter(const std::string& id)
{
    std::unique_ptr<profile_conversion::ProfileDocConverter> converter(
        profile_conversion::Factory::CreateConverter(id));
    Expect(converter != nullptr, "every behavior and the scene can be converted", id);
    return converter;
}

void ExpectXml(const std::string& text, const char* promise)
{
    Expect(analytics::Document().ParseString(text), promise, text);
}
} // namespace

Stored Store(const std::string& id, const std::string& document)
{
    const auto converter = Converter(id);
    Stored stored;
    const std::string config = converter->FromVarloToOnvif(document, stored.params);
    if (config.empty())
        return stored;
    ExpectXml(config, "what is stored of a document can be read");
    std::string engineId;
    std::string engine;
    std::vector<analytics::StoredConfiguration> parts = {
        {analytics::RulePlugin, id, config, stored.params.Active()}};
    if (converter->AdditionalComponent(engineId, engine))
    {
        ExpectXml(engine, "what is stored for an engine can be read");
        parts.push_back({analytics::EnginePlugin, engineId, engine});
    }
    stored.profile = id == kScene ? config : analytics::MergeProfile(parts);
    ExpectXml(stored.profile, "a profile can be read");
    return stored;
}

std::string Read(const std::string& id, const Stored& stored)
{
    return Converter(id)->FromOnvifToVarlo(stored.profile, stored.params);
}

void CheckRead(const std::string& id, const Stored& stored, bool ours)
{
    const std::string read = Read(id, stored);
    if (read.empty())
        return;
    ExpectXml(read, "what a client reads is XML");
    const Stored again = Store(id, read);
    Expect(!again.profile.empty(), "what a client reads can be sent back", read);
    if (!ours)
        return CheckRead(id, again);
    const std::string readAgain = Read(id, again);
    Expect(readAgain == read, "what a client reads comes back equal", read + "\n" + readAgain);
}

const analytics::ManifestArray& Behaviors()
{
    static const Installation installation;
    static const analytics::ManifestArray behaviors = []
    {
        analytics::ManifestArray manifests;
        analytics::PluginManager().GetRulesManifests(manifests);
        return manifests;
    }();
    return behaviors;
}

} // namespace fuzzing
