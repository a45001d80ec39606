#include "documents/Geometry.h"

#include <geos_c.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>

namespace client
{
namespace
{

// Where edges cross, the corners of what is left are rounded: what has less area (square pixels) or length
// (pixels) is nothing.
constexpr double kNothing = 1e-6;

struct Free
{
    void operator()(GEOSContextHandle_HS* library) const { GEOS_finish_r(library); }
};

// The library's state, one for each thread.
GEOSContextHandle_t Library()
{
    static thread_local const std::unique_ptr<GEOSContextHandle_HS, Free> library(GEOS_init_r());
    return library.get();
}

struct Destroy
{
    void operator()(GEOSGeometry* geometry) const { GEOSGeom_destroy_r(Library(), geometry); }
};
using Geometry = std::unique_ptr<GEOSGeometry, Destroy>;

Geometry Made(GEOSGeometry* geometry)
{
    if (geometry == nullptr) // The library has no other way to say so.
        throw std::bad_alloc();
    return Geometry(geometry);
}

// The points; a ring ends where it begins.
GEOSCoordSequence* Sequence(const PointList& points, bool ring)
{
    const auto count = static_cast<unsigned>(points.size());
    GEOSCoordSequence* const sequence = GEOSCoordSeq_create_r(Library(), ring ? count + 1 : count, 2);
    if (sequence == nullptr)
        throw std::bad_alloc();
    const auto set = [sequence](unsigned index, const Point& point)
    {
        GEOSCoordSeq_setXY_r(Library(), sequence, index, static_cast<double>(point.x),
                             static_cast<double>(point.y));
    };
    for (unsigned i = 0; i < count; ++i)
        set(i, points[i]);
    if (ring)
        set(count, points.front());
    return sequence;
}

Geometry Line(const PointList& points)
{
    return Made(GEOSGeom_createLineString_r(Library(), Sequence(points, false)));
}

Geometry Ring(const PointList& points)
{
    return Made(GEOSGeom_createLinearRing_r(Library(), Sequence(points, true)));
}

Geometry Area(const PointList& points)
{
    return Made(GEOSGeom_createPolygon_r(Library(), Ring(points).release(), nullptr, 0));
}

Geometry Together(const std::vector<PointList>& zones)
{
    std::vector<GEOSGeometry*> areas;
    for (const PointList& zone : zones)
        if (zone.size() >= 3 && ShapeTrouble(zone).empty())
            areas.push_back(Area(zone).release());
    const Geometry all = Made(GEOSGeom_createCollection_r(Library(), GEOS_MULTIPOLYGON, areas.data(),
                                                          static_cast<unsigned>(areas.size())));
    return Made(GEOSUnaryUnion_r(Library(), all.get()));
}

bool HasArea(const PointList& points)
{
    const Geometry hull = Made(GEOSConvexHull_r(Library(), Ring(points).get()));
    double area = 0;
    return GEOSArea_r(Library(), hull.get(), &area) == 1 && area > 0;
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
    if (zone.size() < 3 || GEOSisSimple_r(Library(), Ring(zone).get()) == 1)
        return "";
    return HasArea(zone) ? "crosses itself" : "has no area";
}

bool IsCovered(const PointList& zone, const std::vector<PointList>& others)
{
    if (zone.size() < 2 || !ShapeTrouble(zone).empty())
        return false;
    const bool line = zone.size() == 2;
    const Geometry rest =
        Made(GEOSDifference_r(Library(), (line ? Line(zone) : Area(zone)).get(), Together(others).get()));
    double left = 0;
    const int measured =
        line ? GEOSLength_r(Library(), rest.get(), &left) : GEOSArea_r(Library(), rest.get(), &left);
    return measured == 1 && left < kNothing;
}

} // namespace client
