#include "xml/Parser.h"

#include "xml/Memory.h"
#include "xml/Text.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

namespace analytics::xml
{
namespace
{
constexpr std::size_t kMaxBytes = 64U << 20U;
constexpr int kMaxAttributes = 256;

// The encoding that a text declares is ignored: it has been a string of UTF-8 since it came in.
// A short text stands in its node, without memory of its own.
constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOCDATA | XML_PARSE_IGNORE_ENC | XML_PARSE_COMPACT;

// What the parser is spared.
enum class Markup
{
    Harmless,
    Declarations,
    ManyAttributes
};

struct Section
{
    std::string_view begin;
    std::string_view end;
};
constexpr Section kSections[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};

// Steps over the start tag at `position` and counts its attributes.
int SkipTag(std::string_view text, std::size_t& position)
{
    int attributes = 0;
    while (position < text.size() && text[position] != '>')
    {
        const char c = text[position];
        if (c == '"' || c == '\'')
        {
            ++attributes;
            position = text.find(c, position + 1);
            if (position == std::string_view::npos)
                return attributes;
        }
        ++position;
    }
    return attributes;
}

// Looks at the tags before the parser does. The parser compares each attribute of an element with all
// before it, so that four megabytes of attributes would cost minutes, and it reads a document type
// declaration, of which entities and default attributes can grow without bound. What isn't well-formed
// may be misread here from there on, but the parser stops there.
Markup Inspect(std::string_view text)
{
    std::size_t position = text.find('<');
    while (position != std::string_view::npos)
    {
        const std::string_view rest = text.substr(position);
        const bool element = rest.size() > 1 && rest[1] != '!' && rest[1] != '?';
        const auto* section = element
                                  ? std::end(kSections)
                                  : std::find_if(std::begin(kSections), std::end(kSections),
                                                 [&](const Section& s) { return rest.starts_with(s.begin); });
        if (section != std::end(kSections))
            position = text.find(section->end, position + section->begin.size());
        else if (rest.starts_with("<!"))
        {
            position = text.find_first_of("\"'[<>", position + 1);
            if (position != std::string_view::npos && text[position] != '>')
                return Markup::Declarations;
        }
        else if (SkipTag(text, position) > kMaxAttributes)
            return Markup::ManyAttributes;
        if (position != std::string_view::npos)
            position = text.find('<', position);
    }
    return Markup::Harmless;
}

const char* Refusal(const std::string& text)
{
    if (text.empty())
        return "the document is empty";
    if (text.size() > kMaxBytes)
        return "the document is longer than 64 MiB";
    if (!IsXmlText(text))
        return "the document is not UTF-8 or holds a character that XML does not allow";
    const Markup markup = Inspect(text);
    if (markup == Markup::Declarations)
        return "a document type declaration is not accepted";
    if (markup == Markup::ManyAttributes)
        return "an element has more than 256 attributes";
    return nullptr;
}

// Stops at the first error that makes the text ill-formed and keeps it. Left alone, the library prints
// every error and reads on to the end.
void Record(void* context, xmlErrorPtr error)
{
    auto& parser = *static_cast<xmlParserCtxt*>(context);
    auto& first = *static_cast<SyntaxError*>(parser._private);
    if (error->level != XML_ERR_FATAL || parser.instate == XML_PARSER_EOF)
        return;
    // xmlStopParser() would free the text below the hands of the function that reports.
    parser.instate = XML_PARSER_EOF;
    parser.disableSAX = 1;
    first.line = error->line;
    first.reason = error->message == nullptr ? "out of memory" : error->message;
    first.reason.erase(first.reason.find_last_not_of("\r\n ") + 1);
}

// Lets the parser read the text where it stands. From one of the library's buffers it would read a copy,
// and ask that buffer for more at each character of the last 250: a fifth of the time of a small document.
void PushInput(xmlParserCtxt& context, const std::string& text)
{
    xmlParserInput* const input = xmlNewInputStream(&context);
    if (input == nullptr)
        return RequireMemory();
    input->base = input->cur = reinterpret_cast<const xmlChar*>(text.c_str());
    input->end = input->base + text.size();
    inputPush(&context, input);
}

// What the library needs to parse anything, and the nodes for each character of a usual text.
constexpr std::size_t kParserBytes = std::size_t{9} * 1024;
constexpr std::size_t kTreeBytes = 8;

struct ContextDeleter
{
    void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
};
} // namespace

void DocDeleter::operator()(xmlDoc* doc) const
{
    if (!arena->Lent())
        return;
    const Arena::Use use(*arena);
    xmlFreeDoc(doc);
}

std::size_t MostElements(std::string_view text)
{
    std::size_t elements = 0;
    for (std::size_t at = text.find('<'); at != text.npos; at = text.find('<', at + 1))
        elements += text.substr(at).starts_with("</") ? 0 : 1;
    return elements;
}

DocPointer Parse(const std::string& text, SyntaxError& error)
{
    Initialise();
    error = {};
    if (const char* refusal = Refusal(text))
    {
        error.reason = refusal;
        return nullptr;
    }
    const auto arena = std::make_shared<Arena>(kParserBytes + text.size() * kTreeBytes);
    const Arena::Use use(*arena);
    const std::unique_ptr<xmlParserCtxt, ContextDeleter> context(xmlNewParserCtxt());
    if (context == nullptr)
        throw std::bad_alloc();
    context->_private = &error;
    context->sax->serror = Record;
    xmlCtxtUseOptions(context.get(), kOptions);
    PushInput(*context, text);
    xmlParseDocument(context.get());
    DocPointer doc(std::exchange(context->myDoc, nullptr), {arena});
    xmlResetLastError(); // a copy of the thread's, which outlives the document
    if (context->wellFormed == 0)
        doc.reset();
    RequireMemory();
    return doc;
}

} // namespace analytics::xml
