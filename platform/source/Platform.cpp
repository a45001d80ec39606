#include <analytics/Platform.h>

#include "Runtime.h"
#include "settings/SettingsSource.h"

namespace analytics::platform
{
namespace
{
Configuration& Stored()
{
    static Configuration configuration;
    return configuration;
}
} // namespace

Configuration::Configuration()
    : settingsFile(INSTALLED_SETTINGS), pluginFolder(INSTALLED_PLUGINS), stateFolder(INSTALLED_STATE)
{
}

const Configuration& CurrentConfiguration() { return Stored(); }

void Configure(const Configuration& configuration)
{
    Stored() = configuration;
    LoadSettings();
}

} // namespace analytics::platform
