#include "documents/Geometry.h"

#include <boost/geometry.hpp>
#include <boost/geometry/geometries/geometries.hpp>

#include <algorithm>

namespace client
{
namespace
{

namespace geometry = boost::geometry;
using Corner = geometry::model::d2::point_xy<double>;
using Shape = geometry::model::polygon<Corner>;
using Shapes = geometry::model::multi_polygon<Shape>;
using Path = geometry::model::linestring<Corner>;
using Paths = geometry::model::multi_linestring<Path>;

Shape ShapeOf(const PointList& zone)
{
    Shape shape;
    for (const Point& point : zone)
        geometry::append(shape, Corner(static_cast<double>(point.x), static_cast<double>(point.y)));
    geometry::correct(shape);
    return shape;
}

Path PathOf(const PointList& line)
{
    Path path;
    for (const Point& point : line)
        path.emplace_back(static_cast<double>(point.x), static_cast<double>(point.y));
    return path;
}

Shapes Together(const std::vector<PointList>& zones)
{
    Shapes all;
    for (const PointList& zone : zones)
    {
        if (zone.size() < 3 || !ShapeTrouble(zone).empty())
            continue;
        Shapes more;
        geometry::union_(all, ShapeOf(zone), more);
        all = std::move(more);
    }
    return all;
}

const Point* Twice(const PointList& zone)
{
    for (auto point = zone.begin(); point != zone.end(); ++point)
        if (std::find(std::next(point), zone.end(), *point) != zone.end())
            return &*point;
    return nullptr;
}

} // namespace

std::string ShapeTrouble(const PointList& zone)
{
    if (const Point* const twice = Twice(zone))
        return "has the point " + std::to_string(twice->x) + ", " + std::to_string(twice->y) + " twice";
    if (zone.size() < 3)
        return "";
    const Shape shape = ShapeOf(zone);
    if (geometry::area(shape) == 0 && !geometry::intersects(shape.outer()))
        return "has no area";
    if (geometry::intersects(shape.outer()))
        return zone.size() == 3 ? "has no area" : "crosses itself";
    return "";
}

bool IsCovered(const PointList& zone, const std::vector<PointList>& others)
{
    const Shapes cover = Together(others);
    if (zone.size() < 2 || cover.empty() || !ShapeTrouble(zone).empty())
        return false;
    if (zone.size() == 2)
    {
        Paths rest;
        geometry::difference(PathOf(zone), cover, rest);
        return geometry::length(rest) == 0;
    }
    Shapes rest;
    geometry::difference(ShapeOf(zone), cover, rest);
    return geometry::area(rest) == 0;
}

} // namespace client
