#pragma once

#include "Model.h"

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

// A full document with a zone. Throws Failure if this program has none of the behavior.
std::string BehaviorExample(const std::string& id);

// What documents of the behavior look like: the program's own, and those that are given.
Model BehaviorModel(const std::string& id, const std::vector<std::string>& documents);

} // namespace client
