#pragma once

#include <analytics/PluginManager.h>

#include <ProfileDocConverter.h>

#include <string>

namespace fuzzing
{

// What the platform holds of one document of a client, as a whole profile.
struct Stored
{
    std::string profile; // engine document; empty if the document was refused
    profile_conversion::ProfileParameters params;
};

// The conversions as a client meets them. `id` is that of a behavior or the scene.
Stored Store(const std::string& id, const std::string& document);
std::string Read(const std::string& id, const Stored& stored);

// Expects that what a client reads of `stored` can be read again, is accepted when it is sent back, and
// then comes back equal: at once if `stored` is of our own writing, else the next time, since a writer
// leaves out what means nothing. Nothing at all is read of a behavior that is idle.
void CheckRead(const std::string& id, const Stored& stored, bool ours = true);

// The delivered behaviors.
const analytics::ManifestArray& Behaviors();

} // namespace fuzzing
