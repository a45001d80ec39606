#include "frame/ObjectSizes.h"

#include <frame/BehaviorDoc.h>

#include "frame/Nodes.h"

#include <OnvifDoc.h>

#include <algorithm>

namespace profile_conversion::frame
{
namespace
{
std::string VerticesOf(const std::string& object)
{
    return "filters/objectsizes/objectsize[name=\"" + object + "\"]/vertices";
}

void TakeFirst(Line& line, const Points& points)
{
    std::copy_n(points.begin(), std::min(points.size(), std::size(line)), line);
}
} // namespace

void ReadObjectSize(Line& line, const std::string& object, analytics::DocumentNode& behavior,
                    analytics::Document& doc)
{
    TakeFirst(line, BehaviorNodes().ReadPoints(VerticesOf(object) + "/vertex", &behavior, doc));
}

void ReadRectangle(Line& line, const std::string& rectangle, analytics::DocumentNode& filters,
                   analytics::ProfileDoc& doc)
{
    const std::string prefix = Step("");
    Points points;
    doc.GetPoints(points, Named(prefix + "Rectangle", rectangle) + "/" + prefix + "Point", &filters);
    TakeFirst(line, points);
}

void WriteObjectSize(const Line& line, const std::string& object, analytics::DocumentNode& behavior,
                     analytics::Document& doc)
{
    const NodePointer vertices = SelectNode(doc, VerticesOf(object), &behavior);
    for (const Point& point : line)
        BehaviorNodes().AddPointNodes(point, vertices.get());
}

void AddRectangle(const Line& line, const std::string& rectangle, analytics::DocumentNode* filters)
{
    const NodePointer shape = AddChild(filters, "Rectangle");
    if (shape == nullptr)
        return;
    shape->SetProperty("Name", rectangle);
    for (const Point& point : line)
        OnvifDoc().AddPointNode(shape.get(), point);
}

} // namespace profile_conversion::frame
