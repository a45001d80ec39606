#include <frame/BehaviorDoc.h>

#include "frame/Nodes.h"

namespace profile_conversion::frame
{

void BehaviorNodes::NodeToPoint(Point& vertex, analytics::DocumentNode* node, analytics::Document* doc)
{
    if (node == nullptr || doc == nullptr)
        return;
    const int x = doc->GetSingleValue("./x", vertex.X(), node);
    const int y = doc->GetSingleValue("./y", vertex.Y(), node);
    vertex.Set(x, y);
}

void BehaviorNodes::AddPointsNodes(const Points& points, analytics::DocumentNode* parent)
{
    for (const Point& point : points)
        AddPointNodes(point, parent);
}

void BehaviorNodes::AddPointNodes(const Point& point, analytics::DocumentNode* parent)
{
    const NodePointer vertex = AddChild(parent, "vertex");
    AddChild(vertex.get(), "x", point.X());
    AddChild(vertex.get(), "y", point.Y());
}

Points BehaviorNodes::ReadPoints(const std::string& query, analytics::DocumentNode* context,
                                 analytics::Document& doc)
{
    Points points;
    for (const NodePointer& node : SelectNodes(doc, query, context))
        NodeToPoint(points.emplace_back(), node.get(), &doc);
    return points;
}

std::string BehaviorNodes::QueryFor(const std::string& id, const std::string& alias)
{
    return "//behavior[@id='" + id + "' or @id='" + alias + "']";
}

} // namespace profile_conversion::frame
