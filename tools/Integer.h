#pragma once

#include <optional>
#include <string>

namespace client
{

// The integer in the text, which may have a sign and white space around it.
std::optional<long long> Integer(const std::string& text);

} // namespace client
