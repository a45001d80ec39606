#pragma once

#include "request/Request.h"

#include <string>

namespace tarno::osa
{

// What the settings say that `name` may do: a user, "CN=..." of a certificate, or empty for nobody. Without
// roles whoever gets in is an administrator, with them who isn't named is a viewer. Of two roles the higher
// one counts. Throws AnalyticsFault if the settings could never be read.
analytics::platform::Role RoleOf(const std::string& name);

// All that RoleOf() depends on: while it is the same, so is every role.
std::string RolesInSettings();

} // namespace tarno::osa
