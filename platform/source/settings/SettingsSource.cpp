#include "settings/SettingsSource.h"

#include "Runtime.h"
#include "threads/OncePerRequest.h"
#include "threads/PerPath.h"

#include <filesystem>

namespace analytics::platform
{
namespace
{
PerPath<SettingsFile>& Files()
{
    static PerPath<SettingsFile> files;
    return files;
}
} // namespace

std::shared_ptr<SettingsFile> CurrentSettingsFile()
{
    return Files().At(CurrentConfiguration().settingsFile);
}

std::shared_ptr<SettingsDocument> CurrentSettings()
{
    thread_local OncePerRequest<SettingsDocument> settings;
    return settings.Get([] { return CurrentSettingsFile()->Current(); });
}

std::string FileBesideSettings(const std::string& file)
{
    return std::filesystem::path(CurrentConfiguration().settingsFile).parent_path() / file;
}

void LoadSettings() { Files().Renew(CurrentConfiguration().settingsFile)->Current(); }

} // namespace analytics::platform
