#pragma once

#include <string>
#include <vector>

namespace client
{

// The client identifier of a behavior that is meant by its short name, as in "loitering"; an identifier
// (it has a colon or a dot in it) is taken as it is. Throws Failure with the names there are.
std::string BehaviorId(const std::string& text);
// The short name; empty if the behavior has none.
std::string BehaviorName(const std::string& id);
// The short name, or the identifier.
std::string BehaviorCalled(const std::string& id);
std::vector<std::string> BehaviorNames();

} // namespace client
