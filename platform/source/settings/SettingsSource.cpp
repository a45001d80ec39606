#include "settings/SettingsSource.h"

#include "Runtime.h"
#include "threads/PerPath.h"

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

void LoadSettings() { Files().Renew(CurrentConfiguration().settingsFile)->Current(); }

} // namespace analytics::platform
