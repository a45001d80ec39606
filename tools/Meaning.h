#pragma once

#include "documents/Compare.h"

#include <string>
#include <vector>

namespace client
{

// What differs between two documents of a behavior, or of a scene with the identifier kSceneElement, by what
// they mean to the service; nothing, if they mean the same. The scene's name doesn't count.
std::vector<Change> Differences(const std::string& id, const std::string& before, const std::string& after);

// Whether the document of a behavior says no more than a missing one: neither active nor with a zone.
bool IsIdle(const std::string& id, const std::string& document);
// Whether the document of a behavior that is known here says that it works.
bool IsActive(const std::string& id, const std::string& document);

} // namespace client
