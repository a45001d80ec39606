#include "XmlDocument.h"

#include "Failure.h"
#include "Text.h"

#include <algorithm>
#include <sstream>

namespace client
{

using analytics::xml::Read;
using analytics::xml::SyntaxError;

namespace
{

[[noreturn]] void Refuse(const std::string& source, int line, const std::string& why)
{
    throw DocumentFailure(source, line, why + ". Nothing has been sent; correct the document and try again");
}

pugi::xml_node FirstFrom(const pugi::xml_node& node, const std::string& name)
{
    return node.name() == name
               ? node
               : node.find_node([&name](const pugi::xml_node& other) { return other.name() == name; });
}

// White space between elements says nothing.
void DropBlanks(pugi::xml_node element)
{
    const bool holdsElements = !Children(element).empty();
    for (pugi::xml_node child = element.first_child(); child;)
    {
        const pugi::xml_node next = child.next_sibling();
        if (holdsElements && child.type() == pugi::node_pcdata && Trimmed(child.value()).empty())
            element.remove_child(child);
        else if (child.type() == pugi::node_element)
            DropBlanks(child);
        child = next;
    }
}

std::string Written(const pugi::xml_document& document, const char* indent, unsigned format)
{
    std::ostringstream text;
    document.save(text, indent, format, pugi::encoding_utf8);
    return text.str();
}

} // namespace

XmlDocument::XmlDocument(const std::string& text, const std::string& source) : m_lines(text)
{
    SyntaxError error;
    if (!Read(text, m_document, error))
        Refuse(source, std::max(error.line, 1), error.reason);
    DropBlanks(Root());
}

XmlDocument::XmlDocument(const pugi::xml_document& document) : m_lines("") { m_document.reset(document); }

pugi::xml_node XmlDocument::First(const std::string& name) const { return FirstFrom(Root(), name); }

long XmlDocument::LineOf(const pugi::xml_node& node) const
{
    return node.offset_debug() < 0 ? 0 : m_lines.Of(node);
}

std::string XmlDocument::Text() const { return Written(m_document, "", pugi::format_raw); }

std::string XmlDocument::Indented() const
{
    std::string text = Written(m_document, "  ", pugi::format_default | pugi::format_no_declaration);
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

Nodes Children(const pugi::xml_node& parent)
{
    Nodes children;
    for (const pugi::xml_node& child : parent.children())
        if (child.type() == pugi::node_element)
            children.push_back(child);
    return children;
}

Nodes Children(const pugi::xml_node& parent, const std::string& name)
{
    Nodes children = Children(parent);
    std::erase_if(children, [&name](const pugi::xml_node& child) { return child.name() != name; });
    return children;
}

std::string TextOf(const pugi::xml_node& node) { return Trimmed(analytics::xml::Content(node)); }

} // namespace client
