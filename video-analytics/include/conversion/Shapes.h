#pragma once

#include <analytics/Point.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace profile_conversion
{

using analytics::types::Point;
using Points = std::vector<Point>;  // the vertices of a zone, in order
using Polygon = std::vector<Point>; // an exclude zone
using Line = Point[2];

inline void Copy(const Line& from, Line& to) { std::copy(std::begin(from), std::end(from), to); }

} // namespace profile_conversion
