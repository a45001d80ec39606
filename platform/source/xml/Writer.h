#pragma once

#include <libxml/tree.h>

#include <string>

namespace analytics::xml
{

// The document as text in UTF-8 behind an XML declaration, without any white space of its own but a line
// break behind each node of the top.
std::string Write(const xmlDoc& doc);

} // namespace analytics::xml
