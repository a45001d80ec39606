#pragma once

#include <string>

namespace analytics::platform
{

// What Linux knows of this process, in Prometheus' text format, by the names that its clients have in common.
// What can't be read is left out.
std::string ProcessMetricsText();

} // namespace analytics::platform
