#pragma once

#include "Access.h"

#include <string>
#include <vector>

namespace client
{

// A host of a file, and how it lets us in.
struct Target
{
    Access access;
};

// Of a line of a hosts file; what it doesn't say is that of `access`. Throws Failure (usage).
Target ParseTarget(const std::string& line, const Access& access);
// The line that says the same, except what the command line is to say each time.
std::string LineOf(const Target& target);

// The hosts in a file, a line each; empty lines and what follows a # don't count. What a line doesn't say is
// that of `access`. Throws Failure with the line of what is wrong, also for an address that stands there
// twice.
std::vector<Target> ReadHosts(const std::string& file, const Access& access);

} // namespace client
