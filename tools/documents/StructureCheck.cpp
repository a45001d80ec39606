#include "documents/StructureCheck.h"

#include "Text.h"
#include "documents/DocumentJson.h"
#include "documents/Meanings.h"
#include "documents/Shape.h"
#include "documents/Suggestion.h"

#include <algorithm>
#include <set>

namespace client
{
namespace
{

constexpr Bounds kInteger = {INT_MIN, INT_MAX};

std::string Tag(const std::string& name) { return "<" + name + ">"; }

bool IsLeaf(const pugi::xml_node& node) { return Children(node).empty(); }

bool IsBlank(const pugi::xml_node& text) { return Trimmed(text.value()).empty(); }

// Declarations of prefixes and schema locations aren't part of the behavior.
bool IsForTools(const std::string& attribute)
{
    return attribute.starts_with("xmlns:") || attribute.starts_with("xsi:");
}

std::string ChoicesOf(const Field& field)
{
    std::string choices;
    for (long long i = field.accepted.min; i <= field.accepted.max; ++i)
        choices += (choices.empty() ? "" : ", ") + std::to_string(i) + " " + Choice(field, i);
    return choices;
}

class StructureChecker
{
  public:
    StructureChecker(const DocumentModel& model, const XmlDocument& document)
        : m_model(model), m_document(document)
    {
    }

    Findings Check()
    {
        const pugi::xml_node root = m_document.Root();
        if (root.name() != m_model.root.name)
            Error(root, "",
                  Tag(root.name()) + " isn't known; the document has to begin with " +
                      Tag(m_model.root.name));
        const pugi::xml_node top = RootOf(m_model, root);
        if (m_model.root.Attribute("id") != nullptr && top.attribute("id").empty())
            Error(top, "/id",
                  "the id is missing, without which the document can't be read; it is '" + m_model.alias +
                      "'");
        Group(top, m_model.root, "");
        for (const Element& child : m_model.root.children)
            if (child.name == "rois" && top.child("rois").empty())
                Error(top, "/rois",
                      "<rois> is missing, so that no zone would be stored; write <rois/> if there is to be "
                      "none");
        return std::move(m_findings);
    }

  private:
    void Add(Finding::Level level, const pugi::xml_node& node, const std::string& field,
             const std::string& text)
    {
        m_findings.push_back({level, m_document.LineOf(node), field, text});
    }
    void Error(const pugi::xml_node& node, const std::string& field, const std::string& text)
    {
        Add(Finding::Level::Error, node, field, text);
    }

    void Group(const pugi::xml_node& node, const Element& element, const std::string& field)
    {
        Attributes(node, element, field);
        StrayText(node, field);
        const bool list = element.form == Element::Form::List;
        std::set<const Element*> seen;
        std::size_t index = 0;
        for (const pugi::xml_node& child : Children(node))
        {
            if (!element.key.empty() && std::string_view(child.name()) == "name")
                continue;
            const Element* const known = Described(element, child);
            const std::string name = known == nullptr ? child.name() : JsonName(*known);
            const std::string place = Below(field, list ? std::to_string(index++) : name);
            if (known == nullptr)
                Unknown(child, element, place);
            else if (!list && !seen.insert(known).second)
                Error(child, place,
                      Tag(child.name()) + " stands more than once in " + Tag(element.name) +
                          ", and only one of them counts");
            else
                One(child, *known, place);
            if (list && known != nullptr && IsPoints(*known) && Children(child.child("vertices")).empty())
                Error(child, place, Tag(child.name()) + " has no points and would be dropped");
        }
    }

    void One(const pugi::xml_node& node, const Element& element, const std::string& field)
    {
        switch (element.form)
        {
        case Element::Form::Leaf:
            Attributes(node, element, field);
            for (const pugi::xml_node& child : Children(node))
                Unknown(child, element, field);
            Value(node, element.value.front(), Tag(element.name), TextOf(node), field);
            return;
        case Element::Form::Points:
        case Element::Form::Line:
            Attributes(node, element, field);
            StrayText(node, field);
            Vertices(node, element, field);
            return;
        default:
            Group(node, element, field);
        }
    }

    void Attributes(const pugi::xml_node& node, const Element& element, const std::string& field)
    {
        const std::size_t colon = std::string_view(node.name()).find(':');
        if (colon != std::string_view::npos)
            Error(node, field,
                  Tag(node.name()) + " stands in a namespace, and documents have none; leave out the prefix");
        for (const pugi::xml_attribute& attribute : node.attributes())
        {
            const std::string name = attribute.name();
            const Field* const known = element.Attribute(name);
            const bool root = field.empty();
            if (name == "xmlns" && *attribute.value() != '\0')
                Error(node, field,
                      std::string("the namespace '") + attribute.value() +
                          "' isn't that of a document, which has none; leave out xmlns");
            else if (known != nullptr && name == "id")
                Identity(node, attribute.value());
            else if (known != nullptr)
                Value(node, *known, "the attribute '" + name + "'", attribute.value(),
                      Below(root                                  ? ""
                            : element.form == Element::Form::Leaf ? field.substr(0, field.rfind('/'))
                                                                  : field,
                            name));
            else if (name != "xmlns" && !IsForTools(name))
                Error(node, Below(field, name),
                      "the attribute '" + name + "' isn't known in " + Tag(element.name) +
                          " and would be ignored" + SuggestedAttribute(name, element));
        }
    }

    void Identity(const pugi::xml_node& node, const std::string& id)
    {
        if (id != m_model.alias && id != m_model.id)
            Error(node, "/id",
                  "the document is of the behavior '" + id + "', not of '" + m_model.alias + "'");
    }

    void StrayText(const pugi::xml_node& node, const std::string& field)
    {
        for (const pugi::xml_node& child : node.children())
            if ((child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) && !IsBlank(child))
                Error(node, field,
                      Tag(node.name()) + " holds the text '" + Trimmed(child.value()) +
                          "', which would be ignored");
    }

    void Unknown(const pugi::xml_node& node, const Element& parent, const std::string& field)
    {
        const bool known = parent.Child(node.name()) != nullptr;
        const std::string key = IsLeaf(node) ? TextOf(node) : TextOf(node.child("name"));
        Error(node, field,
              Tag(node.name()) + (known ? " of '" + key + "'" : "") + " isn't known in " + Tag(parent.name) +
                  " and would be ignored" + Suggestion(node.name(), parent, m_model.root));
    }

    void Vertices(const pugi::xml_node& node, const Element& element, const std::string& field)
    {
        std::size_t index = 0;
        for (const pugi::xml_node& child : Children(node))
            if (std::string_view(child.name()) != "vertex")
                Error(child, field,
                      Tag(child.name()) + " isn't known in " + Tag(element.name) + "; it may hold vertex");
            else
                Vertex(child, Below(field, std::to_string(index++)));
        const bool isLine = element.form == Element::Form::Line;
        if (isLine && index != 0 && index != 2)
            Error(node, field,
                  "<vertices> has " + std::to_string(index) + (index == 1 ? " point" : " points") +
                      "; a box or a line here has two");
    }

    void Vertex(const pugi::xml_node& node, const std::string& field)
    {
        StrayText(node, field);
        const Field coordinate{"", Field::Kind::Number, "0", kInteger, std::nullopt};
        for (const char* const name : {"x", "y"})
        {
            const Nodes found = Children(node, name);
            if (found.size() != 1)
                Error(node, field,
                      "<vertex> has " + std::string(found.empty() ? "no" : "more than one") + " " +
                          Tag(name));
            for (const pugi::xml_node& one : found)
                Value(one, coordinate, Tag(name), TextOf(one), field + (*name == 'x' ? "/0" : "/1"));
        }
        for (const pugi::xml_node& child : Children(node))
            if (std::string_view(child.name()) != "x" && std::string_view(child.name()) != "y")
                Error(child, field, Tag(child.name()) + " isn't known in <vertex>; it holds x and y");
        if (const pugi::xml_attribute attribute = node.first_attribute())
            Error(node, field,
                  std::string("the attribute '") + attribute.name() +
                      "' isn't known in <vertex> and would be ignored");
    }

    void Value(const pugi::xml_node& node, const Field& field, const std::string& called,
               const std::string& text, const std::string& place)
    {
        const bool isNumber = field.kind == Field::Kind::Number || field.kind == Field::Kind::Flag;
        if (field.kind == Field::Kind::Constant)
            Constant(node, field, called, text, place);
        if (!isNumber)
            return;
        const std::optional<long long> number = Integer(text);
        if (field.kind == Field::Kind::Flag && (!number || !field.accepted.Holds(*number)))
            Error(node, place,
                  called + " is '" + text + "', which is neither 0 nor 1; write 0 for no, 1 for yes");
        else if (!number || !kInteger.Holds(*number))
            Error(node, place,
                  called + " is '" + text +
                      "', which isn't an integer from -2147483648 to 2147483647, and would count as missing");
        else if (!field.accepted.Holds(*number))
            Error(node, place,
                  called + " is " + text + ", and only these numbers are known: " + ChoicesOf(field));
        else if (const std::optional<Bounds> advised = Advised(field); advised && !advised->Holds(*number))
            Add(Finding::Level::Warning, node, place,
                called + " is " + std::to_string(*number) + ", the advised values are " +
                    BoundsText(*advised));
    }

    void Constant(const pugi::xml_node& node, const Field& field, const std::string& called,
                  const std::string& text, const std::string& place)
    {
        const std::optional<long long> number = Integer(field.value);
        if (text != field.value && (!number || Integer(text) != number))
            Error(node, place,
                  called + " is '" + text + "'; the service knows nothing but '" + field.value + "' here");
    }

    const DocumentModel& m_model;
    const XmlDocument& m_document;
    Findings m_findings;
};

} // namespace

Findings CheckStructure(const DocumentModel& model, const XmlDocument& document)
{
    return StructureChecker(model, document).Check();
}

} // namespace client
