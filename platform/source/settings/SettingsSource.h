#pragma once

#include "settings/SettingsFile.h"

namespace analytics::platform
{

// The settings file of the configuration in force.
std::shared_ptr<SettingsFile> CurrentSettingsFile();

// Begins anew with the configured file. Throws AnalyticsFault if it can't be read.
void LoadSettings();

} // namespace analytics::platform
