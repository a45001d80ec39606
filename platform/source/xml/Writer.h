#pragma once

#include <libxml/tree.h>

#include <string>

namespace analytics::xml
{

// The document as text in UTF-8 behind an XML declaration, without any white space of its own but a line
// break behind each node of the top.
std::string Write(const xmlDoc& doc);
// The node with all below it, as it stands in such a document. What declares its namespaces has to stand
// there too.
std::string Write(const xmlNode& node);

} // namespace analytics::xml
