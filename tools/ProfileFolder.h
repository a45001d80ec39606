#pragma once

#include "Documents.h"

#include <optional>
#include <string>
#include <vector>

namespace client
{

// A whole profile as documents.
struct ProfileDocuments
{
    struct Behavior
    {
        std::string id;
        Source document;
    };

    std::string name;
    std::string preset;
    bool active = false;
    Frame frame; // in which coordinates count
    std::optional<Source> scene;
    std::vector<Behavior> behaviors;
};

// The frame that a file names: one that is wrong there is no fault of the command line. Throws Failure
// (document).
Frame FrameOf(const std::string& text, const std::string& file);

// Writes the documents into the folder, which is made if it is missing: profile.xml, which names the others,
// scene.xml, and a file for each behavior. Throws Failure, also if a profile is there already and `force`
// isn't given; then nothing is changed.
void WriteFolder(const std::string& folder, const ProfileDocuments& profile, bool force);

// Reads what WriteFolder() has written, and never a file outside of the folder. Throws
// Failure.
ProfileDocuments ReadFolder(const std::string& folder);

} // namespace client
