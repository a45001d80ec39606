#include "documents/Shape.h"

#include "Text.h"
#include "XmlDocument.h"

#include <algorithm>

namespace client
{

bool MeansSomething(const Field& field) { return field.kind != Field::Kind::Constant || field.name == "id"; }

bool IsPoints(const Element& item)
{
    const auto isPoints = [](const Element& child)
    {
        return child.form == Element::Form::Points ||
               (child.form == Element::Form::Leaf && child.value.front().kind == Field::Kind::Assigned);
    };
    return std::all_of(item.children.begin(), item.children.end(), isPoints);
}

const Element* LineOf(const Element& element)
{
    return element.key.empty() ? nullptr : element.Child("vertices");
}

const Element* Described(const Element& parent, const pugi::xml_node& child)
{
    const auto isNamesake = [&child](const Element& element) { return element.name == child.name(); };
    const bool one = std::count_if(parent.children.begin(), parent.children.end(), isNamesake) == 1;
    for (const Element& element : parent.children)
    {
        if (!isNamesake(element))
            continue;
        // Of several constants of one name each has a text of its own.
        const bool same = !element.key.empty() ? element.key == TextOf(child.child("name"))
                                               : one || element.value.front().value == TextOf(child);
        if (same)
            return &element;
    }
    return nullptr;
}

bool InJson(const Element& element)
{
    return element.form != Element::Form::Group ||
           std::any_of(element.children.begin(), element.children.end(),
                       [](const Element& child) {
                           return child.form == Element::Form::Leaf ? MeansSomething(child.value.front())
                                                                    : InJson(child);
                       });
}

std::string JsonName(const Element& element) { return element.key.empty() ? element.name : element.key; }

PointList PointsOf(const pugi::xml_node& vertices)
{
    PointList points;
    for (const pugi::xml_node& vertex : Children(vertices, "vertex"))
        points.push_back(
            {Integer(TextOf(vertex.child("x"))).value_or(0), Integer(TextOf(vertex.child("y"))).value_or(0)});
    return points;
}

pugi::xml_node RootOf(const DocumentModel& model, const pugi::xml_node& from)
{
    if (model.root.name == from.name())
        return from;
    return from.find_node([&model](const pugi::xml_node& node) { return model.root.name == node.name(); });
}

} // namespace client
