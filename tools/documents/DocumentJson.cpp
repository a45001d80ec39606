#include "documents/DocumentJson.h"

#include "Text.h"
#include "XmlDocument.h"
#include "documents/Shape.h"

namespace client
{
namespace
{

Json ValueOf(const Field& field, const std::string& text)
{
    const std::optional<long long> number = Integer(text);
    const bool isNumber = field.kind == Field::Kind::Number || field.kind == Field::Kind::Flag;
    return isNumber && number ? Json(*number) : Json(text);
}

Json VerticesToJson(const pugi::xml_node& vertices)
{
    Json points = Json::array();
    for (const pugi::xml_node& vertex : Children(vertices, "vertex"))
        points.push_back(
            {Integer(TextOf(vertex.child("x"))).value_or(0), Integer(TextOf(vertex.child("y"))).value_or(0)});
    return points;
}

void AddAttributes(Json& object, const Element& element, const pugi::xml_node& node)
{
    for (const Field& field : element.attributes)
        if (const pugi::xml_attribute attribute = node.attribute(field.name.c_str());
            attribute && MeansSomething(field))
            object[field.name] = ValueOf(field, attribute.value());
}

Json GroupOf(const Element& element, const pugi::xml_node& node);

Json ListOf(const Element& list, const pugi::xml_node& node)
{
    const Element& item = list.children.front();
    Json items = Json::array();
    for (const pugi::xml_node& child : Children(node, item.name))
        items.push_back(IsPoints(item) ? VerticesToJson(child.child("vertices")) : GroupOf(item, child));
    return items;
}

void AddChild(Json& object, const Element& element, const pugi::xml_node& node)
{
    if (LineOf(element) != nullptr)
        object[element.key] = VerticesToJson(node.child("vertices"));
    else if (element.form == Element::Form::Leaf && MeansSomething(element.value.front()))
        object[element.name] = ValueOf(element.value.front(), TextOf(node));
    else if (element.form == Element::Form::List)
        object[element.name] = ListOf(element, node);
    else if (element.form == Element::Form::Points)
        object[element.name] = VerticesToJson(node);
    else if (Json group = GroupOf(element, node); element.form == Element::Form::Group && !group.empty())
        object[element.name] = std::move(group);
    if (element.form == Element::Form::Leaf)
        AddAttributes(object, element, node);
}

Json GroupOf(const Element& element, const pugi::xml_node& node)
{
    Json object = Json::object();
    AddAttributes(object, element, node);
    for (const pugi::xml_node& child : Children(node))
        if (const Element* const known = Described(element, child);
            known != nullptr && !object.contains(JsonName(*known)))
            AddChild(object, *known, child);
    // A zone that hasn't been drawn yet has no points.
    for (const Element& child : element.children)
        if (child.form == Element::Form::Points && !object.contains(child.name))
            object[child.name] = Json::array();
    return object;
}

} // namespace

Json ToJson(const DocumentModel& model, const std::string& document)
{
    const XmlDocument parsed(document, "the document");
    const pugi::xml_node root = RootOf(model, parsed.Root());
    return root ? GroupOf(model.root, root) : Json();
}

std::string Below(const std::string& pointer, const std::string& name)
{
    return pointer + (Json::json_pointer() / name).to_string();
}

} // namespace client
