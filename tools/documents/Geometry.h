#pragma once

#include <string>
#include <vector>

namespace client
{

struct Point
{
    long long x;
    long long y;
    friend bool operator==(const Point&, const Point&) = default;
};
using PointList = std::vector<Point>;

// What is wrong with the shape of a zone, or of a line of two points, as in "crosses itself"; empty if
// nothing is.
std::string ShapeTrouble(const PointList& zone);

// Whether the other zones together leave nothing of this one. A line counts with its length.
bool IsCovered(const PointList& zone, const std::vector<PointList>& others);

} // namespace client
