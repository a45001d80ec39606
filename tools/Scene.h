#pragma once

#include <optional>
#include <string>

namespace client
{

class Service;

inline constexpr char kSceneElement[] = "analyticProfile";

// The scene of a profile that exists; nothing if it has none. Throws Failure.
std::optional<std::string> SceneOf(Service& service, int profile);
// The document of a behavior; empty if the profile has none. Throws Failure, also for a behavior that the
// service doesn't know.
std::string BehaviorOf(Service& service, int profile, const std::string& id);
// The document with another name in it. Throws Failure if it isn't a scene.
std::string RenamedScene(const std::string& document, const std::string& name);

} // namespace client
