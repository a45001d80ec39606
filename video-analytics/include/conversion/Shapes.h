#pragma once

#include <analytics/Point.h>

#include <vector>

namespace profile_conversion
{

using analytics::types::Point;
using Points = std::vector<Point>;  // the vertices of a zone, in order
using Polygon = std::vector<Point>; // an exclude zone
using Line = Point[2];

} // namespace profile_conversion
