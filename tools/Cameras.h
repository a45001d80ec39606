#pragma once

#include "Access.h"
#include "documents/Frame.h"

#include <optional>
#include <string>
#include <vector>

namespace client
{

// A camera by name, or by a line of a hosts file: what would otherwise be given as options. Empty fields are
// not set.
struct Camera
{
    std::string name;
    std::string url;
    std::string user;
    std::string passwordFile;
    std::string authorities;
    std::string certificate;
    std::string key;
    std::optional<Frame> frame;
};

// ~/.config/varlo-analytics/cameras.ini, or below XDG_CONFIG_HOME.
std::string CamerasFile();
// In the order of the file, which may be missing. Names of files count from its folder. Throws Failure with
// the line of what is wrong.
std::vector<Camera> ReadCameras();
// Throws Failure if no camera has the name.
Camera NamedCamera(const std::string& name);
// Puts it at the end of the file, or takes it out. Throws Failure if the name is taken, or unknown.
void AddCamera(const Camera& camera);
void RemoveCamera(const std::string& name);

// A line of a hosts file: an address or the name of a camera, then `key=value` as in the file of cameras,
// with white space between. Names of files count from `folder`. Throws Failure (usage), which begins with
// `place`.
Camera ParseHost(const std::string& line, const std::string& folder, const std::string& place);

// How to access a camera; fields that aren't set are taken from `other`. Reads no password.
Access AccessOf(const Camera& camera, const Access& other);

} // namespace client
