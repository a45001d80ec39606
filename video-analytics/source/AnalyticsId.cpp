#include <AnalyticsId.h>

#include <SceneAnalyzerConfig.h>

#include <analytics/PluginManager.h>

#include <stdsoap2.h>

namespace varloapi
{
namespace
{
// Not valid if there is no such plug-in; its names are empty then.
analytics::Manifest Find(const std::string& id)
{
    analytics::Manifest manifest;
    const analytics::PluginManager plugins;
    plugins.GetManifest(manifest, id);
    return manifest;
}
} // namespace

std::string AnalyticsId::AnalyticsIdFromVarloId(const std::string& varloId)
{
    const analytics::Manifest manifest = Find(varloId);
    return manifest.Valid() ? manifest.Id() : std::string();
}

std::string AnalyticsId::VarloIdFromAnalyticsId(const std::string& analyticsId)
{
    const analytics::Manifest manifest = Find(analyticsId);
    return manifest.Valid() ? manifest.Alias() : std::string();
}

std::string AnalyticsId::SceneAnalyzerId() { return profile_conversion::sceneanalyzer::Config::Id(); }

} // namespace varloapi

int analyticsapi::UnsupportedBehavior(soap* soap)
{
    return soap_sender_fault(soap, "Unsupported behavior Id", nullptr);
}
