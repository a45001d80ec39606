#include "XmlDocument.h"

#include "Failure.h"
#include "Text.h"

#include <libxml/parser.h>

#include <limits>

namespace client
{
namespace
{

const xmlChar* Xml(const std::string& text) { return reinterpret_cast<const xmlChar*>(text.c_str()); }

std::string Taken(xmlChar* text)
{
    const std::string result = text == nullptr ? "" : reinterpret_cast<const char*>(text);
    xmlFree(text);
    return result;
}

xmlNode* FirstFrom(xmlNode* node, const std::string& name)
{
    if (node == nullptr || Name(node) == name)
        return node;
    for (xmlNode* const child : Children(node))
        if (xmlNode* const found = FirstFrom(child, name))
            return found;
    return nullptr;
}

[[noreturn]] void Refuse(const std::string& source, int line, const std::string& why)
{
    throw Failure(Exit::Document, Printable(source) + ":" + std::to_string(line) + ": " + Printable(why) +
                                      ". Nothing has been sent; correct the document and try again");
}

} // namespace

XmlDocument::XmlDocument(const std::string& text, const std::string& source) : m_document(nullptr, xmlFreeDoc)
{
    if (text.size() > std::numeric_limits<int>::max())
        Refuse(source, 1, "the document is too large");
    const std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxtPtr)> context(xmlNewParserCtxt(),
                                                                             xmlFreeParserCtxt);
    constexpr int kOptions =
        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NOCDATA | XML_PARSE_NOBLANKS;
    m_document.reset(xmlCtxtReadMemory(context.get(), text.data(), static_cast<int>(text.size()), nullptr,
                                       nullptr, kOptions));
    if (m_document == nullptr)
    {
        const xmlError& error = context->lastError;
        Refuse(source, error.line, error.message == nullptr ? "this is no XML" : Trimmed(error.message));
    }
    if (const xmlDtd* const dtd = m_document->intSubset; dtd != nullptr && dtd->children != nullptr)
        Refuse(source, 1, "the service takes no document that declares entities or elements");
}

xmlNode* XmlDocument::First(const std::string& name) const
{
    return FirstFrom(xmlDocGetRootElement(m_document.get()), name);
}

std::string XmlDocument::Text() const
{
    xmlChar* text = nullptr;
    int size = 0;
    xmlDocDumpMemoryEnc(m_document.get(), &text, &size, "UTF-8");
    return Taken(text);
}

std::string XmlDocument::Indented() const
{
    const std::unique_ptr<xmlBuffer, void (*)(xmlBufferPtr)> buffer(xmlBufferCreate(), xmlBufferFree);
    xmlNodeDump(buffer.get(), m_document.get(), xmlDocGetRootElement(m_document.get()), 0, 1);
    return reinterpret_cast<const char*>(xmlBufferContent(buffer.get()));
}

std::string Name(const xmlNode* node) { return reinterpret_cast<const char*>(node->name); }

std::vector<xmlNode*> Children(const xmlNode* parent)
{
    std::vector<xmlNode*> children;
    for (xmlNode* child = parent->children; child != nullptr; child = child->next)
        if (child->type == XML_ELEMENT_NODE)
            children.push_back(child);
    return children;
}

std::vector<xmlNode*> Children(const xmlNode* parent, const std::string& name)
{
    std::vector<xmlNode*> children = Children(parent);
    std::erase_if(children, [&name](const xmlNode* child) { return Name(child) != name; });
    return children;
}

xmlNode* Child(const xmlNode* parent, const std::string& name)
{
    const std::vector<xmlNode*> children = Children(parent, name);
    return children.empty() ? nullptr : children.front();
}

std::string TextOf(const xmlNode* node)
{
    return node == nullptr ? "" : Trimmed(Taken(xmlNodeGetContent(node)));
}

std::string AttributeOf(const xmlNode* node, const std::string& name)
{
    return Taken(xmlGetNoNsProp(node, Xml(name)));
}

} // namespace client
