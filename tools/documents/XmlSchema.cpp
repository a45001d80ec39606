#include "XmlDocument.h"
#include "documents/Meanings.h"
#include "documents/Schemas.h"
#include "documents/Shape.h"

#include <algorithm>
#include <set>

namespace client
{
namespace
{

using Node = pugi::xml_node;

Node Add(Node parent, const char* what, const std::string& name = "")
{
    Node node = parent.append_child(what);
    if (!name.empty())
        node.append_attribute("name").set_value(name.c_str());
    return node;
}

void Occurs(Node node, const char* min, const char* max = nullptr)
{
    node.append_attribute("minOccurs").set_value(min);
    if (max != nullptr)
        node.append_attribute("maxOccurs").set_value(max);
}

void Explain(Node node, const std::string& name)
{
    const Meaning& meaning = MeaningOf(name);
    if (meaning.text.empty())
        return;
    const std::string unit = meaning.unit.empty() ? "" : " (" + meaning.unit + ")";
    Add(Add(node, "xs:annotation"), "xs:documentation").text().set((meaning.text + unit).c_str());
}

// One of some values, as numbers or as words.
void Enumerate(Node parent, const char* base, const std::vector<std::string>& values)
{
    Node restriction = Add(Add(parent, "xs:simpleType"), "xs:restriction");
    restriction.append_attribute("base").set_value(base);
    for (const std::string& value : values)
        Add(restriction, "xs:enumeration").append_attribute("value").set_value(value.c_str());
}

bool IsInteger(const std::string& text)
{
    return !text.empty() && text.find_first_not_of("-0123456789") == std::string::npos;
}

class Writer
{
  public:
    explicit Writer(const DocumentModel& model) : m_model(model)
    {
        m_schema = m_document.append_child("xs:schema");
        m_schema.append_attribute("xmlns:xs").set_value("http://www.w3.org/2001/XMLSchema");
        Node root = Add(m_schema, "xs:element", model.root.name);
        Add(Add(root, "xs:annotation"), "xs:documentation").text().set(model.title.c_str());
        Complex(root, model.root);
    }

    std::string Text()
    {
        return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n" + XmlDocument(m_document).Indented() + "\n";
    }

  private:
    void Simple(Node parent, const Field& field)
    {
        switch (field.kind)
        {
        case Field::Kind::Flag:
            return Enumerate(parent, "xs:int", {"0", "1"});
        case Field::Kind::Constant:
            if (field.name == "id")
                return Enumerate(parent, "xs:string", {m_model.alias, m_model.id});
            return Enumerate(parent, IsInteger(field.value) ? "xs:int" : "xs:token", {field.value});
        case Field::Kind::Number:
            if (field.accepted != Bounds{INT_MIN, INT_MAX})
                return Numbers(parent, field.accepted);
            parent.append_attribute("type").set_value("xs:int");
            return;
        default:
            parent.append_attribute("type").set_value("xs:string");
        }
    }

    static void Numbers(Node parent, const Bounds& bounds)
    {
        Node restriction = Add(Add(parent, "xs:simpleType"), "xs:restriction");
        restriction.append_attribute("base").set_value("xs:int");
        Add(restriction, "xs:minInclusive").append_attribute("value").set_value(bounds.min);
        Add(restriction, "xs:maxInclusive").append_attribute("value").set_value(bounds.max);
    }

    void Attributes(Node parent, const Element& element)
    {
        for (const Field& field : element.attributes)
        {
            Node attribute = Add(parent, "xs:attribute", field.name);
            if (field.name == "id")
                attribute.append_attribute("use").set_value("required");
            Explain(attribute, field.name);
            Simple(attribute, field);
        }
    }

    void Describe(Node node, const Element& element)
    {
        Explain(node, element.name);
        if (element.form != Element::Form::Leaf)
            return Complex(node, element);
        if (element.attributes.empty())
            return Simple(node, element.value.front());
        // A value with attributes extends a type, which needs a name.
        const std::string type = element.name + "Value";
        if (m_types.insert(type).second)
        {
            Node named = Add(m_schema, "xs:element", type);
            Simple(named, element.value.front());
            Node simple = named.child("xs:simpleType");
            if (simple.empty())
            {
                simple = Add(m_schema, "xs:simpleType");
                Add(simple, "xs:restriction")
                    .append_attribute("base")
                    .set_value(named.attribute("type").value());
            }
            else
                simple = m_schema.append_move(simple);
            simple.append_attribute("name").set_value(type.c_str());
            m_schema.remove_child(named);
        }
        Node extension = Add(Add(Add(node, "xs:complexType"), "xs:simpleContent"), "xs:extension");
        extension.append_attribute("base").set_value(type.c_str());
        Attributes(extension, element);
    }

    void Complex(Node node, const Element& element)
    {
        Node type = Add(node, "xs:complexType");
        if (element.form == Element::Form::Points || element.form == Element::Form::Line)
            Points(type, element);
        else if (element.form == Element::Form::List)
        {
            Node item = Add(Add(type, "xs:sequence"), "xs:element", element.children.front().name);
            Occurs(item, "0", "unbounded");
            Complex(item, element.children.front());
        }
        else if (HasNamesakes(element))
            Namesakes(node, type, element);
        else
            Members(type, element);
        Attributes(type, element);
    }

    static bool HasNamesakes(const Element& element)
    {
        std::set<std::string> names;
        return std::any_of(element.children.begin(), element.children.end(),
                           [&names](const Element& child)
                           { return !child.key.empty() || !names.insert(child.name).second; });
    }

    void Members(Node type, const Element& element)
    {
        if (element.children.empty() && element.key.empty())
            return;
        Node all = Add(type, "xs:all");
        if (!element.key.empty())
            Enumerate(Add(all, "xs:element", "name"), "xs:token", m_keys);
        for (const Element& child : element.children)
        {
            Node member = Add(all, "xs:element", child.name);
            const bool required =
                child.name == "rois" || (IsPoints(element) && child.form == Element::Form::Points);
            if (!required)
                Occurs(member, "0");
            m_nonempty = IsPoints(element);
            Describe(member, child);
            m_nonempty = false;
        }
    }

    // Several elements of one name, each once: distinguished by their names, or by their texts.
    void Namesakes(Node node, Node type, const Element& element)
    {
        const Element& first = element.children.front();
        m_keys.clear();
        for (const Element& child : element.children)
            if (child.name == first.name)
                m_keys.push_back(first.key.empty() ? child.value.front().value : child.key);
        Node sequence = Add(type, "xs:sequence");
        AddNamesake(sequence, first);
        for (const Element& child : element.children)
            if (child.name != first.name)
            {
                Node rest = Add(sequence, "xs:sequence");
                Occurs(rest, "0");
                Describe(Add(rest, "xs:element", child.name), child);
                AddNamesake(rest, first);
            }
        Node unique =
            Add(node, "xs:unique", element.name + (m_uniques++ == 0 ? "" : std::to_string(m_uniques)));
        Add(unique, "xs:selector").append_attribute("xpath").set_value(first.name.c_str());
        Add(unique, "xs:field").append_attribute("xpath").set_value(first.key.empty() ? "." : "name");
    }

    void AddNamesake(Node sequence, const Element& first)
    {
        Node one = Add(sequence, "xs:element", first.name);
        Occurs(one, "0", "unbounded");
        if (first.key.empty())
            Enumerate(one, "xs:token", m_keys);
        else
            Complex(one, first);
    }

    void Points(Node type, const Element& element)
    {
        Node sequence = Add(type, "xs:sequence");
        const bool line = element.form == Element::Form::Line;
        if (line)
            Occurs(sequence, "0");
        Node vertex = Add(sequence, "xs:element", "vertex");
        Occurs(vertex, line ? "2" : m_nonempty ? "1" : "0", line ? "2" : "unbounded");
        Node all = Add(Add(vertex, "xs:complexType"), "xs:all");
        for (const char* const name : {"x", "y"})
            Add(all, "xs:element", name).append_attribute("type").set_value("xs:int");
    }

    const DocumentModel& m_model;
    pugi::xml_document m_document;
    Node m_schema;
    std::set<std::string> m_types;
    std::vector<std::string> m_keys; // of the boxes or lines that are being written
    bool m_nonempty = false;         // of the points that are being written
    int m_uniques = 0;
};

} // namespace

std::string XmlSchema(const DocumentModel& model) { return Writer(model).Text(); }

} // namespace client
