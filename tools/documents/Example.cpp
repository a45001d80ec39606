#include "documents/Example.h"

#include "XmlDocument.h"
#include "documents/Geometry.h"
#include "documents/Meanings.h"

#include <algorithm>

namespace client
{
namespace
{

const PointList kZone = {{40, 40}, {280, 40}, {280, 200}, {40, 200}};
const PointList kExcluded = {{240, 160}, {280, 160}, {280, 200}, {240, 200}};
const PointList kNoLimit = {{0, 0}, {0, 0}};

std::string Value(const Field& field)
{
    if (field.name == "active" || field.name == "enable")
        return "1";
    const std::optional<Bounds> advised = Advised(field);
    return advised ? std::to_string(std::clamp(field.Number(), advised->min, advised->max)) : field.value;
}

// As many points of it as a zone is to have: two of them are a line.
PointList ZoneFor(const DocumentModel& model)
{
    PointList zone = kZone;
    if (const std::optional<Bounds> points = model.ZonePoints();
        points && points->max < static_cast<long long>(zone.size()))
        zone.resize(static_cast<std::size_t>(points->max));
    return zone;
}

void AddPoints(pugi::xml_node vertices, const PointList& points)
{
    for (const Point& point : points)
    {
        pugi::xml_node vertex = vertices.append_child("vertex");
        vertex.append_child("x").text().set(point.x);
        vertex.append_child("y").text().set(point.y);
    }
}

void Fill(pugi::xml_node node, const Element& element, const PointList& zone);

void Add(pugi::xml_node parent, const Element& element, const PointList& zone)
{
    pugi::xml_node node = parent.append_child(element.name.c_str());
    if (!element.key.empty())
        node.append_child("name").text().set(element.key.c_str());
    Fill(node, element, zone);
}

void Fill(pugi::xml_node node, const Element& element, const PointList& zone)
{
    for (const Field& field : element.attributes)
        node.append_attribute(field.name.c_str()).set_value(Value(field).c_str());
    for (const Element& child : element.children)
        Add(node, child, zone);
    if (element.form == Element::Form::Line)
        AddPoints(node, kNoLimit);
    else if (element.form == Element::Form::Points)
        AddPoints(node, std::string_view(node.parent().name()) == "roi" ? zone : kExcluded);
    else if (element.form == Element::Form::Leaf)
    {
        const std::string text = Value(element.value.front());
        const bool isZone = std::string_view(node.parent().name()) == "roi" && element.name == "name";
        if (isZone || !text.empty())
            node.text().set(isZone ? "Zone 1" : text.c_str());
    }
}

} // namespace

std::string Example(const DocumentModel& model, const Frame& frame)
{
    pugi::xml_document document;
    Fill(document.append_child(model.root.name.c_str()), model.root, ZoneFor(model));
    const XmlDocument example(document);
    return XmlDocument(Scaled(example.Text(), Frame(), frame), "the example").Indented();
}

} // namespace client
