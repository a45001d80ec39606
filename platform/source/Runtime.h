#pragma once

#include <analytics/Platform.h>

namespace analytics::platform
{
// The configuration in force. Set once before threads start, read by any.
const Configuration& CurrentConfiguration();
} // namespace analytics::platform
