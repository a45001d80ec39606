#pragma once

#include <analytics/PluginManager.h>

#include <cstdint>
#include <string>
#include <vector>

namespace analytics::platform
{

class Store;

// The one rule for size: what couldn't be given back isn't stored. See also request/DocumentLimit.h, which
// bounds a document while it is converted.

// Why an engine document can't be stored, as a sentence for the client; empty if it can. `word`: what the
// client calls its form of it.
std::string DocumentRefusal(const std::string& word, const std::string& config);

// The same for a profile's name and camera preset, which go out in XML documents.
std::string NameRefusal(const std::string& name);
std::string PresetRefusal(const std::string& preset);

// limits/profileBytes.
std::int64_t ProfileBytes();
// Throw ClientFault if a profile of so many bytes is more than `limit`, and AnalyticsFault if so much can't
// be read.
void RequireStorable(std::int64_t bytes, std::int64_t limit);
void RequireReadable(int profile, std::int64_t bytes);

// An empty one if there is no such plug-in.
Manifest ManifestOf(const std::string& id);
// What the rules take of Settings::MaxResource(), with the plug-ins that they depend on, each counted once.
std::uint64_t CostOf(const std::vector<std::string>& rules);

// Says on standard error what a store holds beyond the limits: an older version or other settings let it in.
void ReportOversize(Store& store);

} // namespace analytics::platform
