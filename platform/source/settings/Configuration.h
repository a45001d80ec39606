#pragma once

#include <analytics/Platform.h>

#include <string>

namespace analytics::platform
{

// What Configure() was last given. Set before threads start, read by any.
const Configuration& CurrentConfiguration();

// A file that the settings name: where it is relative, it counts from the settings document.
std::string FileBesideSettings(const std::string& file);

// No query names again what is wrong with the settings document as it stands.
void SettingsMistakesAreNamed();

// Reads the settings document now if it has changed, and says on standard error if it can't be used. Throws
// AnalyticsFault if it never could.
void RefreshSettings();

} // namespace analytics::platform
