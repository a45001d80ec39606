#include <OnvifDoc.h>

#include "frame/Nodes.h"

namespace profile_conversion
{
using analytics::DocumentNode;
using frame::AddChild;
using frame::NodePointer;

namespace
{
constexpr std::size_t kLinePoints = 2;
} // namespace

OnvifDoc::~OnvifDoc() = default;

void OnvifDoc::AddPointNode(DocumentNode* parent, const Point& point)
{
    const NodePointer node = AddChild(parent, "Point");
    if (node == nullptr)
        return;
    node->SetProperty("x", point.X());
    node->SetProperty("y", point.Y());
}

void OnvifDoc::AddSimpleItemNode(DocumentNode* parent, const std::string& propertyName, int propertyValue)
{
    const NodePointer item = AddChild(parent, "SimpleItem");
    if (item == nullptr)
        return;
    item->SetProperty("Name", propertyName);
    item->SetProperty("Value", propertyValue);
}

void OnvifDoc::AddSimpleItemNode(DocumentNode* parent, const std::string& propertyName,
                                 const std::string& propertyValue)
{
    if (const NodePointer item = AddChild(parent, "SimpleItem"))
        item->SetProperty(propertyName, propertyValue);
}

void OnvifDoc::AddPolygonOrLineNode(DocumentNode* parent, const std::string& name, const Points& points,
                                    bool linePossible, bool addElementItem)
{
    if (parent == nullptr || points.empty())
        return;
    const NodePointer item = addElementItem ? AddChild(parent, "ElementItem") : nullptr;
    const NodePointer shape = AddChild(addElementItem ? item.get() : parent,
                                       linePossible && points.size() == kLinePoints ? "Line" : "Polygon");
    if (shape == nullptr)
        return;
    if (!name.empty())
        shape->SetProperty("Name", name);
    for (const Point& point : points)
        AddPointNode(shape.get(), point);
}

DocumentNode* OnvifDoc::AddRule(DocumentNode* parent, const std::string& name, const std::string& type)
{
    NodePointer rule = AddChild(parent, "Rule");
    if (rule != nullptr)
    {
        rule->SetProperty("Name", name);
        rule->SetProperty("Type", type);
    }
    return rule.release();
}

DocumentNode* OnvifDoc::AddElementItem(DocumentNode* parent, const std::string& propertyName,
                                       const std::string& propertyValue)
{
    NodePointer item = AddChild(parent, "ElementItem");
    if (item != nullptr)
        item->SetProperty(propertyName, propertyValue);
    return item.release();
}

} // namespace profile_conversion
