#pragma once

#include <string>

namespace analytics::platform
{

// One line for the operator. Lines of several threads don't mix.
void Say(const std::string& sentence);

} // namespace analytics::platform
