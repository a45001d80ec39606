#pragma once

#include <libxml/tree.h>

#include <string>
#include <vector>

namespace client
{

// A value that came back other than it was sent. An empty optional side isn't there at all.
struct Change
{
    long line; // in the document that was sent
    std::string node;
    std::string sent;
    std::string stored;
};

inline constexpr char kAbsent[] = "(nothing)";

// Compares what was sent with what the service has kept. Zones and sizes are recognised by their names as
// long as these are the same, else by their place. Equal numbers are equal in any spelling; white space
// around a value doesn't count. Attributes are compared if they were sent.
std::vector<Change> Changes(const xmlNode* sent, const xmlNode* stored);

} // namespace client
