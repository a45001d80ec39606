#pragma once

#include "access/Users.h"
#include "files/FileText.h"

#include <string>

namespace tarno::osa
{

// The text of a file as it last stood. Throws AccessFault if it couldn't be read.
const std::string& TextOf(const analytics::platform::WatchedFile& file);

// Says on standard error that a renewed file is in force, or, with the reason, that what was read before
// stays so. The same again is said once in 10 seconds. Any thread.
void SayTakenOver(const std::string& path);
void SayNotTakenOver(const AccessFault& fault);
// A part of a renewed file that doesn't count; as above.
void SayLeftOut(const std::string& sentence);

} // namespace tarno::osa
