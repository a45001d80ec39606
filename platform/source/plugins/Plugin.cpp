#include "plugins/Plugin.h"

#include <analytics/Faults.h>

#include "files/FileText.h"
#include "plugins/ManifestFile.h"

#include <functional>

namespace analytics::platform
{
namespace
{
// A shortage passes; what it hides must not be taken for missing.
FileText ReadOrThrow(const std::string& path)
{
    FileText file = ReadFile(path);
    if (file.Exhausted())
        throw AnalyticsFault(path + " can't be read just now: " + file.failure + "; try again later");
    return file;
}

PluginText ReadText(const std::string& path)
{
    FileText file = ReadOrThrow(path);
    if (file.Missing())
        return {};
    if (!file.failure.empty())
        return {"", "The default configuration " + path + " can't be read: " + file.failure};
    return {std::move(file.text), ""};
}
} // namespace

bool ReadPlugin(const std::string& home, Plugin& plugin, PluginProblem& problem)
{
    const std::string path = home + '/' + kManifestFile;
    const FileText file = ReadOrThrow(path);
    const std::string ignored = ". The plug-in is left out.";
    if (!file.failure.empty())
    {
        problem = {path + ": the manifest can't be read: " + file.failure + ignored, 0};
        return false;
    }
    xml::SyntaxError error;
    auto fields = ReadManifest(file.text, error);
    if (!fields)
    {
        problem = {path + ':' + std::to_string(error.line) + ": the manifest can't be used: " + error.reason +
                       ignored,
                   std::hash<std::string>()(file.text)};
        return false;
    }
    fields->home = home;
    plugin.manifest = Manifest(*fields);
    plugin.engineDefault = ReadText(home + '/' + kEngineFile);
    plugin.clientsDefault = ReadText(home + '/' + kBehaviorFile);
    const std::string factory = home + '/' + kFactoryFile;
    plugin.factory = StampOf(factory).error == 0 ? factory : "";
    return true;
}

} // namespace analytics::platform
