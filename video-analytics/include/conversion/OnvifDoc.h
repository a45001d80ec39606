#pragma once

#include <Shapes.h>

#include <string>

namespace analytics
{
class DocumentNode;
}

namespace profile_conversion
{

// The small writers of the engine form that the families share. New elements take the namespace of
// their parent, which stays the caller's.
class OnvifDoc
{
  public:
    virtual ~OnvifDoc();

    // These do nothing without a parent.
    void AddPointNode(analytics::DocumentNode* parent, const Point& point);
    void AddSimpleItemNode(analytics::DocumentNode* parent, const std::string& propertyName,
                           int propertyValue);
    // Unlike the form above, this one makes a single attribute with `propertyName` as its name.
    void AddSimpleItemNode(analytics::DocumentNode* parent, const std::string& propertyName,
                           const std::string& propertyValue);
    // A Polygon, or a Line if that is possible and there are exactly two points; nothing for no points.
    // It stands in an ElementItem of its own if that is asked for. The name is that of the shape.
    void AddPolygonOrLineNode(analytics::DocumentNode* parent, const std::string& name, const Points& points,
                              bool linePossible, bool addElementItem);

    // The caller owns the handle of the new node. `parent` must not be null.
    analytics::DocumentNode* AddRule(analytics::DocumentNode* parent, const std::string& name,
                                     const std::string& type);
    analytics::DocumentNode* AddElementItem(analytics::DocumentNode* parent, const std::string& propertyName,
                                            const std::string& propertyValue);
};

} // namespace profile_conversion
