#pragma once

#include <analytics/Manifest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace analytics
{

// An empty one if there is no such plug-in.
Manifest ManifestOf(const std::string& id);

// What the rules take of Settings::MaxResource(), with the plug-ins that they depend on, each counted once.
std::uint64_t CostOf(const std::vector<std::string>& rules);

} // namespace analytics
