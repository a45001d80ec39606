#pragma once

#include "settings/SettingsFile.h"

namespace analytics::platform
{

// The settings file of the configuration in force.
std::shared_ptr<SettingsFile> CurrentSettingsFile();

// The settings as they stand now or, within a request, as they stood when it first asked. Throws
// AnalyticsFault if they could never be read.
std::shared_ptr<SettingsDocument> CurrentSettings();

// A file that the settings name: where it is relative, it counts from the settings document.
std::string FileBesideSettings(const std::string& file);

// Begins anew with the configured file. Throws AnalyticsFault if it can't be read.
void LoadSettings();

} // namespace analytics::platform
