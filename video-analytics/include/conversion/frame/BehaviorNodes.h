#pragma once

#include <Shapes.h>

#include <string>

namespace analytics
{
class Document;
class DocumentNode;
} // namespace analytics

namespace profile_conversion::frame
{

// What the readers and writers of all behavior documents have in common. Nodes and documents stay the
// caller's; an operation without its node does nothing.
class BehaviorNodes
{
  public:
    // A coordinate that is missing leaves the one of `vertex`.
    void NodeToPoint(Point& vertex, analytics::DocumentNode* node, analytics::Document* doc);
    // One `vertex` element for each point.
    void AddPointsNodes(const Points& points, analytics::DocumentNode* parent);
    void AddPointNodes(const Point& point, analytics::DocumentNode* parent);
    // The points of the nodes that `query` selects from `context`, each (0, 0) where it says nothing.
    Points ReadPoints(const std::string& query, analytics::DocumentNode* context, analytics::Document& doc);
    // The path to the behavior element, which may bear either identifier.
    static std::string QueryFor(const std::string& id, const std::string& alias);
};

} // namespace profile_conversion::frame
