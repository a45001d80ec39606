#pragma once

#include <string>
#include <vector>

namespace client
{

// The addresses in a file, a line each, as WholeUrl() takes them; empty lines and what follows a # don't
// count. Throws Failure with the line of what is wrong, also for an address that stands there twice.
std::vector<std::string> ReadHosts(const std::string& file);

} // namespace client
