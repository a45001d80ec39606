#pragma once

#include <string>

namespace analytics::platform
{

// One line for the operator. Lines of several threads don't mix.
void Say(const std::string& sentence);
// The same, unless this was said within the last 10 seconds.
void SayOnce(const std::string& sentence);

} // namespace analytics::platform
