#include "documents/DocumentJson.h"

#include "Text.h"
#include "documents/Shape.h"

#include <cmath>

namespace client
{
namespace
{

constexpr double kExact = 1LL << 53; // beyond, a floating-point number isn't exact any more

// What XML has no room for.
bool HasControls(const std::string& text)
{
    return std::any_of(
        text.begin(), text.end(),
        [](char c) { return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' && c != '\r'; });
}

bool CanBeElement(const std::string& name)
{
    const auto isPlain = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; };
    return !name.empty() && std::isdigit(static_cast<unsigned char>(name.front())) == 0 &&
           std::all_of(name.begin(), name.end(), isPlain);
}

// An integer in any spelling that JSON has for it.
std::optional<std::string> Number(const Json& json)
{
    if (json.is_number_integer())
        return json.dump();
    const double number = json.is_number_float() ? json.get<double>() : NAN;
    if (std::abs(number) <= kExact && number == std::floor(number))
        return std::to_string(static_cast<long long>(number));
    return std::nullopt;
}

bool HoldsNumber(const Field& field)
{
    return field.kind == Field::Kind::Number || field.kind == Field::Kind::Flag ||
           (field.kind == Field::Kind::Constant && Integer(field.value));
}

std::string Shown(const Json& json)
{
    constexpr std::size_t kMost = 60;
    const std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    return text.size() <= kMost ? text : text.substr(0, kMost) + "...";
}

class Builder
{
  public:
    explicit Builder(Findings& findings) : m_findings(findings) {}

    void Group(const Element& element, const Json& json, pugi::xml_node node, const std::string& pointer)
    {
        for (const Field& field : element.attributes)
            if (json.contains(field.name))
                if (const auto text = Value(field, json[field.name], Below(pointer, field.name)))
                    node.append_attribute(field.name.c_str()).set_value(text->c_str());
        for (const Element& child : element.children)
            if (InJson(child) && json.contains(JsonName(child)))
                Child(child, json, node, Below(pointer, JsonName(child)));
        for (const auto& [name, value] : json.items())
            if (!IsKnown(element, name))
                Unknown(name, value, node, Below(pointer, name));
    }

  private:
    void Refuse(const std::string& pointer, const Json& json, const std::string& wanted)
    {
        m_findings.push_back(
            {Finding::Level::Error, 0, pointer, "this is " + Shown(json) + ", and has to be " + wanted});
    }

    static bool IsKnown(const Element& element, const std::string& name)
    {
        if (element.Attribute(name) != nullptr)
            return true;
        for (const Element& child : element.children)
            if ((InJson(child) && JsonName(child) == name) || IsBeside(child, name))
                return true;
        return false;
    }

    // An attribute of a value is next to it.
    static bool IsBeside(const Element& child, const std::string& name)
    {
        const Field* const attribute = child.form == Element::Form::Leaf ? child.Attribute(name) : nullptr;
        return attribute != nullptr && MeansSomething(*attribute);
    }

    // An element of the name, which the check doesn't know either.
    void Unknown(const std::string& name, const Json& value, pugi::xml_node node, const std::string& pointer)
    {
        if (!CanBeElement(name) || node.empty())
            return m_findings.push_back({Finding::Level::Error, 0, pointer, "this isn't known here"});
        pugi::xml_node child = node.append_child(name.c_str());
        if (value.is_primitive() && !value.is_null())
            child.text().set(value.is_string() ? value.get<std::string>().c_str() : value.dump().c_str());
    }

    std::optional<std::string> Value(const Field& field, const Json& json, const std::string& pointer)
    {
        const bool isNumber = HoldsNumber(field);
        if (field.kind == Field::Kind::Flag && json.is_boolean())
            return json.get<bool>() ? "1" : "0";
        if (const auto number = Number(json); isNumber && number)
            return number;
        if (!isNumber && json.is_string() && !HasControls(json.get<std::string>()))
            return json.get<std::string>();
        Refuse(pointer, json,
               field.kind == Field::Kind::Flag ? "0 or 1"
               : isNumber                      ? "an integer"
                                               : "a text without control characters");
        return std::nullopt;
    }

    void Child(const Element& element, const Json& object, pugi::xml_node parent, const std::string& pointer)
    {
        const Json& json = object[JsonName(element)];
        pugi::xml_node node = parent.append_child(element.name.c_str());
        if (const Element* const line = LineOf(element))
        {
            node.append_child("name").text().set(element.key.c_str());
            Points(json, node.append_child(line->name.c_str()), pointer);
        }
        else if (element.form == Element::Form::Leaf)
            Leaf(element, object, node, pointer);
        else if (element.form == Element::Form::List)
            List(element, json, node, pointer);
        else if (element.form == Element::Form::Group)
            Object(element, json, node, pointer);
        else
            Points(json, node, pointer);
    }

    void Leaf(const Element& element, const Json& object, pugi::xml_node node, const std::string& pointer)
    {
        if (const auto text = Value(element.value.front(), object[element.name], pointer))
            node.text().set(text->c_str());
        else
            node.parent().remove_child(node);
        const std::string parent = pointer.substr(0, pointer.rfind('/'));
        for (const Field& field : element.attributes)
            if (object.contains(field.name) && MeansSomething(field))
                if (const auto text = Value(field, object[field.name], Below(parent, field.name)))
                    node.append_attribute(field.name.c_str()).set_value(text->c_str());
    }

    void Object(const Element& element, const Json& json, pugi::xml_node node, const std::string& pointer)
    {
        if (json.is_object())
            Group(element, json, node, pointer);
        else
            Refuse(pointer, json, "an object");
    }

    void List(const Element& list, const Json& json, pugi::xml_node node, const std::string& pointer)
    {
        if (!json.is_array())
            return Refuse(pointer, json, "a list");
        const Element& item = list.children.front();
        for (std::size_t i = 0; i < json.size(); ++i)
        {
            pugi::xml_node child = node.append_child(item.name.c_str());
            const std::string place = Below(pointer, std::to_string(i));
            if (IsPoints(item))
                Points(json[i], child.append_child("vertices"), place);
            else
                Object(item, json[i], child, place);
        }
    }

    void Points(const Json& json, pugi::xml_node node, const std::string& pointer)
    {
        if (!json.is_array())
            return Refuse(pointer, json, "a list of points, as in [[40, 40], [280, 40]]");
        for (std::size_t i = 0; i < json.size(); ++i)
        {
            const bool pair = json[i].is_array() && json[i].size() == 2;
            const auto x = pair ? Number(json[i][0]) : std::nullopt;
            const auto y = pair ? Number(json[i][1]) : std::nullopt;
            if (!x || !y)
            {
                Refuse(Below(pointer, std::to_string(i)), json[i], "a point, as in [40, 200]");
                continue;
            }
            pugi::xml_node vertex = node.append_child("vertex");
            vertex.append_child("x").text().set(x->c_str());
            vertex.append_child("y").text().set(y->c_str());
        }
    }

    Findings& m_findings;
};

} // namespace

pugi::xml_document FromJson(const DocumentModel& model, const Json& json, Findings& findings)
{
    pugi::xml_document document;
    pugi::xml_node root = document.append_child(model.root.name.c_str());
    if (json.is_object())
        Builder(findings).Group(model.root, json, root, "");
    else
        findings.push_back({Finding::Level::Error, 0, "", "a document is an object"});
    if (model.root.Attribute("id") != nullptr && !root.attribute("id"))
        root.append_attribute("id").set_value(model.alias.c_str());
    return document;
}

} // namespace client
