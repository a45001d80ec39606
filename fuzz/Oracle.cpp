#include "Oracle.h"

#include "Expect.h"

#include "xml/Path.h"
#include "xml/Reader.h"
#include "xml/Text.h"

#include <analytics/Document.h>

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <vector>

namespace fuzzing
{
namespace
{
template <class T, void (*Free)(T*)>
struct Deleter
{
    void operator()(T* object) const { Free(object); }
};
using Parser = std::unique_ptr<xmlParserCtxt, Deleter<xmlParserCtxt, xmlFreeParserCtxt>>;
using Tree = std::unique_ptr<xmlDoc, Deleter<xmlDoc, xmlFreeDoc>>;
using Queries = std::unique_ptr<xmlXPathContext, Deleter<xmlXPathContext, xmlXPathFreeContext>>;
using Result = std::unique_ptr<xmlXPathObject, Deleter<xmlXPathObject, xmlXPathFreeObject>>;

const xmlChar* Chars(const std::string& text) { return reinterpret_cast<const xmlChar*>(text.c_str()); }

std::string Taken(xmlChar* text)
{
    const std::unique_ptr<xmlChar, void (*)(void*)> owned(text, xmlFree);
    return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

// Null if the text isn't well-formed. `strict`: nor with namespaces, of which libxml2 wants valid addresses
// too.
Tree ReadByOracle(const std::string& text, bool strict = false)
{
    constexpr int kOptions =
        XML_PARSE_NONET | XML_PARSE_NOCDATA | XML_PARSE_IGNORE_ENC | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
    const Parser parser(xmlNewParserCtxt());
    Tree tree(xmlCtxtReadMemory(parser.get(), text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                                kOptions));
    return parser->wellFormed != 0 && (!strict || parser->nsWellFormed != 0) ? std::move(tree) : nullptr;
}

// The tree as libxml2 writes it, without the document's type.
std::string Written(const Tree& tree)
{
    const std::unique_ptr<xmlBuffer, void (*)(xmlBufferPtr)> buffer(xmlBufferCreate(), xmlBufferFree);
    xmlSaveNoEmptyTags = 1; // an empty CDATA section is an empty text there, and nothing here
    for (xmlNode* node = tree->children; node != nullptr; node = node->next)
        if (node->type != XML_DTD_NODE)
            xmlNodeDump(buffer.get(), tree.get(), node, 0, 0);
    return reinterpret_cast<const char*>(xmlBufferContent(buffer.get()));
}

bool IsDocumentedRefusal(const std::string& text)
{
    constexpr std::array kReasons = {"a document type declaration is not accepted",
                                     "an element has more than 256 attributes",
                                     "the elements are nested too deeply"};
    analytics::xml::SyntaxError error;
    analytics::xml::Check(text, error);
    const bool ascii =
        std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) > 0x7F; });
    // A document type is refused whatever the parser finds wrong in its declaration first.
    return std::ranges::find(kReasons, error.reason) != kReasons.end() ||
           text.find("<!DOCTYPE") != std::string::npos || !analytics::xml::IsXmlText(text) ||
           (!ascii && error.reason == "not well-formed (invalid token)");
}

std::string FoundByOracle(const Tree& tree, const std::string& query)
{
    const Queries queries(xmlXPathNewContext(tree.get()));
    // The first binding of each prefix in document order.
    for (xmlNode* node = xmlDocGetRootElement(tree.get()); node != nullptr;)
    {
        for (const xmlNs* space = node->type == XML_ELEMENT_NODE ? node->nsDef : nullptr; space != nullptr;
             space = space->next)
            if (space->prefix != nullptr && xmlXPathNsLookup(queries.get(), space->prefix) == nullptr)
                xmlXPathRegisterNs(queries.get(), space->prefix, space->href);
        if (node->type == XML_ELEMENT_NODE && node->children != nullptr)
            node = node->children;
        else
        {
            while (node != nullptr && node->next == nullptr)
                node = node->parent;
            node = node == nullptr ? nullptr : node->next;
        }
    }
    queries->node = reinterpret_cast<xmlNode*>(tree.get());
    queries->error = [](void*, xmlErrorPtr) {};
    const Result result(xmlXPathEvalExpression(Chars(query), queries.get()));
    std::string found;
    if (result == nullptr || result->nodesetval == nullptr)
        return found;
    xmlXPathNodeSetSort(result->nodesetval);
    for (int i = 0; i < result->nodesetval->nodeNr; ++i)
        found += Taken(xmlNodeGetContent(result->nodesetval->nodeTab[i])) + '\n';
    return found;
}
} // namespace

void CompareReading(const std::string& text)
{
    analytics::Document document;
    const bool ours = document.ParseString(text);
    if (!ours)
        return Expect(ReadByOracle(text, true) == nullptr || IsDocumentedRefusal(text),
                      "what is well-formed is taken", text);
    const Tree theirs = ReadByOracle(text);
    Expect(theirs != nullptr, "what is taken is well-formed", text);
    const std::string dump = document.DumpToString();
    const Tree again = ReadByOracle(dump);
    Expect(again != nullptr, "what is written is well-formed", dump);
    Expect(Written(again) == Written(theirs), "a document keeps its content", text + '\n' + dump);
}

void CompareQuery(const std::string& text, const std::string& query)
{
    analytics::Document document;
    const Tree theirs = ReadByOracle(text);
    if (theirs == nullptr || !document.ParseString(text) || !analytics::xml::Path::Read(query))
        return;
    std::string found;
    for (analytics::DocumentNode* const match : document.SelectNodes(query, nullptr))
    {
        const std::unique_ptr<analytics::DocumentNode> node(match);
        found += node->GetValue() + '\n';
    }
    const std::string expected = FoundByOracle(theirs, query);
    Expect(found == expected, "a path finds what XPath finds",
           query + '\n' + found + "instead of\n" + expected + "in\n" + text);
}

} // namespace fuzzing
