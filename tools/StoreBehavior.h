#pragma once

#include "Documents.h"

#include <string>

namespace client
{

struct Session;

// Checks a behavior's document, also whether it can be active beside the others of the profile, stores it and
// reports what the service changed. `profile` is its number or its name. Throws
// Failure, and then nothing has been sent.
void StoreBehavior(Session& session, const Source& source, const std::string& profile, const std::string& id);

} // namespace client
