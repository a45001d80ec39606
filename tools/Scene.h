#pragma once

#include "Model.h"

#include <optional>
#include <string>
#include <vector>

namespace client
{

class Service;

inline constexpr char kSceneElement[] = "analyticProfile";

// The scene of a profile that exists; nothing if it has none. Throws Failure.
std::optional<std::string> SceneOf(Service& service, int profile);
// The document with another name in it.
std::string RenamedScene(const std::string& document, const std::string& name);
// What scenes look like, from those that are given.
Model SceneModel(const std::vector<std::string>& documents);

} // namespace client
