#include <analytics/DocumentNode.h>

#include "request/DocumentLimit.h"
#include "xml/Nodes.h"
#include "xml/Reader.h"
#include "xml/Text.h"

namespace analytics
{
using xml::AttributeOf;
using xml::IsElement;
using xml::NodeOf;
using xml::Require;

namespace
{
// Whether the document can be read again with an element or attribute of that name. A prefix isn't allowed.
bool IsName(const std::string& name)
{
    if (xml::IsPlainName(name))
        return name != "xmlns";
    xml::SyntaxError error;
    return !name.empty() && name.find_first_of(" \t\r\n<>/='\"&:?!") == std::string::npos &&
           xml::Check("<" + name + "/>", error);
}

void Set(pugi::xml_node element, const std::string& name, const std::string& value)
{
    if (IsElement(element) && IsName(name))
        xml::SetAttribute(element, name, value);
}

DocumentNode* AddElement(pugi::xml_node parent, const std::string& name, const std::string& text)
{
    if (!IsElement(parent) || !IsName(name) || !platform::AdmitAnother())
        return nullptr;
    std::string whole(xml::QName(parent.name()).prefix);
    (whole.empty() ? whole : whole += ':') += name;
    return xml::HandleOf({xml::AppendElement(parent, whole, text), {}});
}

// Behind the children of `place`, with the declarations that it needs there. Gives the place of the node.
pugi::xml_node Move(pugi::xml_node node, pugi::xml_node place)
{
    xml::Declare(node, xml::Missing(node, place));
    if (node.root() == place.root())
        return Require(place.append_move(node));
    xml::PlaceOfUnlinked(place);
    std::string text;
    xml::Print(node, text);
    constexpr unsigned kAsPrinted =
        pugi::parse_escapes | pugi::parse_ws_pcdata | pugi::parse_comments | pugi::parse_pi;
    Require(place.append_buffer(text.data(), text.size(), kAsPrinted, pugi::encoding_utf8));
    node.parent().remove_child(node);
    return place.last_child();
}
} // namespace

DocumentNode::DocumentNode() : m_handle(nullptr) {}
DocumentNode::DocumentNode(void* handle) : m_handle(handle) {}
DocumentNode::~DocumentNode() = default;

void* DocumentNode::Handle() const { return m_handle; }
void DocumentNode::Handle(void* handle) { m_handle = handle; }
void DocumentNode::DeleteHandle() { m_handle = nullptr; }

int DocumentNode::GetValue(int defaultValue) { return xml::ToInt(GetValue(), defaultValue); }

std::string DocumentNode::GetValue() { return xml::Match{NodeOf(this), AttributeOf(*this)}.Text(); }

void DocumentNode::SetValue(int value) { SetValue(std::to_string(value)); }

void DocumentNode::SetValue(const std::string& value)
{
    const std::string text = xml::ToXmlText(value);
    if (pugi::xml_attribute attribute = AttributeOf(*this))
        Require(attribute.set_value(text.c_str()));
    pugi::xml_node node = NodeOf(this);
    if (!IsElement(node))
        return;
    node.remove_children();
    if (pugi::xml_text content = node.text(); content || !text.empty())
        Require(content.set(text.c_str()));
}

int DocumentNode::GetProperty(const std::string& name, int defaultValue)
{
    return xml::ToInt(xml::PlainAttribute(NodeOf(this), name).value(), defaultValue);
}

std::string DocumentNode::GetProperty(const std::string& name)
{
    return xml::PlainAttribute(NodeOf(this), name).value();
}

void DocumentNode::SetProperty(const std::string& name, int value)
{
    Set(NodeOf(this), name, std::to_string(value));
}

void DocumentNode::SetProperty(const std::string& name, const std::string& value)
{
    Set(NodeOf(this), name, xml::ToXmlText(value));
}

DocumentNode* DocumentNode::AddNewChild(const std::string& name, int value)
{
    return AddElement(NodeOf(this), name, std::to_string(value));
}

DocumentNode* DocumentNode::AddNewChild(const std::string& name, const std::string& value)
{
    return AddElement(NodeOf(this), name, xml::ToXmlText(value));
}

void DocumentNode::AddChild(DocumentNode* child)
{
    const pugi::xml_node node = NodeOf(this);
    const pugi::xml_node moved = NodeOf(child);
    if (IsElement(node) && IsElement(moved) && !xml::Contains(moved, node))
        child->Handle(Move(moved, node).internal_object());
}

void DocumentNode::Unlink(bool destroy)
{
    const pugi::xml_node node = NodeOf(this);
    if (!IsElement(node))
        return;
    if (!destroy)
    {
        Move(node, xml::PlaceOfUnlinked(node));
        return;
    }
    node.parent().remove_child(node);
    m_handle = nullptr;
}

// Nodes take their declarations along wherever they go.
void DocumentNode::ReconciliateNs() {}

std::string DocumentNode::DumpToString()
{
    pugi::xml_node node = NodeOf(this);
    if (!IsElement(node))
        return GetValue();
    const xml::Declarations missing = xml::Missing(node, {});
    xml::Declare(node, missing);
    std::string text;
    xml::Print(node, text);
    for (std::size_t i = 0; i < missing.size(); ++i)
        node.remove_attribute(node.first_attribute());
    return text;
}

} // namespace analytics
