#pragma once

#include <string>
#include <vector>

namespace tarno::osa
{

// What in the text of a settings document isn't known, or can't be used as it stands, each as a sentence that
// begins with `path` and the line. Also the one mistake of a text that is not well-formed.
std::vector<std::string> MistakesInSettings(const std::string& path, const std::string& text);

// The same of the files that the settings in force name: certificates, revocation lists and users, and
// whether they leave open what can be reached from outside. `address` is where the service listens.
std::vector<std::string> MistakesInAccess(const std::string& address);

} // namespace tarno::osa
