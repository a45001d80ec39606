#include "xml/XmlFile.h"

#include "xml/Memory.h"

#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

namespace analytics::platform
{
namespace
{
constexpr int kOptions =
    XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_BIG_LINES | XML_PARSE_COMPACT;

template <class T, void (*Release)(T*)>
struct Releaser
{
    void operator()(T* object) const { Release(object); }
};
using ParserContext = std::unique_ptr<xmlParserCtxt, Releaser<xmlParserCtxt, xmlFreeParserCtxt>>;
using QueryContext = std::unique_ptr<xmlXPathContext, Releaser<xmlXPathContext, xmlXPathFreeContext>>;
using QueryResult = std::unique_ptr<xmlXPathObject, Releaser<xmlXPathObject, xmlXPathFreeObject>>;

std::string Trimmed(const std::string& text)
{
    constexpr const char* kSpace = " \t\r\n";
    const auto begin = text.find_first_not_of(kSpace);
    return begin == std::string::npos ? std::string()
                                      : text.substr(begin, text.find_last_not_of(kSpace) - begin + 1);
}

// Takes ownership.
std::string Taken(xmlChar* text)
{
    if (text == nullptr)
        return {};
    const std::unique_ptr<xmlChar, void (*)(void*)> owned(text, xmlFree);
    xml::RequireMemory();
    return reinterpret_cast<const char*>(text);
}

// The library's words, but for the one case where they name a switch that nobody here can set.
std::string Reason(const xmlError& error)
{
    const std::string message = Trimmed(error.message != nullptr ? error.message : "it is not well-formed");
    return message.starts_with("Excessive depth") ? "the elements are nested too deeply" : message;
}

// Called for each error and warning of a parse. The first error is the one to tell; what follows is
// often only its consequence.
void KeepFirst(void* context, xmlErrorPtr raised)
{
    auto& error = *static_cast<XmlError*>(static_cast<xmlParserCtxtPtr>(context)->_private);
    if (error.reason.empty() && raised->level >= XML_ERR_ERROR)
        error = {raised->line, Reason(*raised)};
}

void Silent(void*, xmlErrorPtr) {}

// Entity declarations are passed over, so that a reference to one is an error and none can grow.
void NoEntity(void*, const xmlChar*, int, const xmlChar*, const xmlChar*, xmlChar*) {}

ParserContext MakeParser(XmlError& error)
{
    ParserContext parser(xmlNewParserCtxt());
    if (!parser)
        throw std::bad_alloc();
    parser->_private = &error;
    parser->sax->serror = KeepFirst;
    parser->sax->entityDecl = NoEntity;
    return parser;
}

std::vector<XmlText> NodeTexts(const xmlNodeSet* nodes)
{
    std::vector<XmlText> texts;
    for (int i = 0; nodes != nullptr && i < nodes->nodeNr; ++i)
    {
        xmlNode* node = nodes->nodeTab[i];
        const auto line = node->type == XML_NAMESPACE_DECL ? 0 : static_cast<int>(xmlGetLineNo(node));
        texts.push_back({Trimmed(Taken(xmlXPathCastNodeToString(node))), line});
    }
    return texts;
}
} // namespace

void XmlFile::Free::operator()(xmlDoc* document) const { xmlFreeDoc(document); }

std::unique_ptr<XmlFile> XmlFile::Parse(const std::string& text, XmlError& error)
{
    xml::Initialise();
    error = {};
    if (text.empty())
    {
        error = {1, "it is empty"};
        return nullptr;
    }
    const ParserContext parser = MakeParser(error);
    Handle document(xmlCtxtReadMemory(parser.get(), text.data(), static_cast<int>(text.size()), nullptr,
                                      nullptr, kOptions));
    xml::RequireMemory();
    if (document)
        return std::unique_ptr<XmlFile>(new XmlFile(std::move(document)));
    if (error.reason.empty())
        error.reason = "it is not well-formed";
    return nullptr;
}

std::string XmlFile::RootName() const
{
    return reinterpret_cast<const char*>(xmlDocGetRootElement(m_document.get())->name);
}

std::vector<XmlText> XmlFile::Texts(const std::string& query) const
{
    const QueryContext context(xmlXPathNewContext(m_document.get()));
    if (!context)
        throw std::bad_alloc();
    context->error = Silent;
    const QueryResult result(
        xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(query.c_str()), context.get()));
    xml::RequireMemory();
    if (!result)
        return {};
    if (result->type != XPATH_NODESET)
        return {{Trimmed(Taken(xmlXPathCastToString(result.get()))), 0}};
    xmlXPathNodeSetSort(result->nodesetval);
    return NodeTexts(result->nodesetval);
}

} // namespace analytics::platform
