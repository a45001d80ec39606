#pragma once

#include "store/ProfileDocument.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace analytics
{

namespace platform
{
class StoreConnection;
}

// ClientFault unless the profile exists, and then with `refusal` if it isn't empty.
void RequireIn(platform::StoreConnection& connection, int profile, const std::string& refusal = "");

// The active profile; nothing if none is.
std::optional<int> ActiveIn(platform::StoreConnection& connection);

void PutIn(platform::StoreConnection& connection, int profile, const StoredConfiguration& stored);
// False if the profile holds it already.
bool AddIn(platform::StoreConnection& connection, int profile, const StoredConfiguration& stored);
// False if the profile doesn't hold it.
bool DeleteIn(platform::StoreConnection& connection, int profile, PluginType kind, const std::string& id);
// Of the rules or engines that a profile holds, in order; nothing if there is no such profile.
std::optional<std::vector<std::string>> IdsIn(platform::StoreConnection& connection, int profile,
                                              PluginType kind, bool onlyActive);
// All that a profile holds.
std::vector<StoredConfiguration> ConfigurationsIn(platform::StoreConnection& connection, int profile);
// What a profile holds, in bytes as stored: all behaviors, engines and the scene.
std::int64_t BytesIn(platform::StoreConnection& connection, int profile);
// A single document and its size in bytes; nothing if the profile doesn't hold it.
std::optional<std::string> DocumentIn(platform::StoreConnection& connection, int profile, PluginType kind,
                                      const std::string& id);
std::optional<std::int64_t> DocumentBytesIn(platform::StoreConnection& connection, int profile,
                                            PluginType kind, const std::string& id);

} // namespace analytics
