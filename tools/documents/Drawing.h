#pragma once

#include "documents/Frame.h"
#include "documents/Model.h"

#include <string>
#include <utility>
#include <vector>

namespace client
{

// A picture of the frame, as SVG: the zones, lines, exclude zones and boxes of all documents, each kind of
// document in a color of its own, with their names and directions, and a legend. Documents may be empty; idle
// behaviors are left out.
std::string Drawing(const std::string& title, const Frame& frame,
                    const std::vector<std::pair<const DocumentModel*, std::string>>& documents);

} // namespace client
