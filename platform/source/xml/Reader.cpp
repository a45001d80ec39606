#include "xml/Reader.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <random>

namespace analytics::xml
{
namespace
{
constexpr std::size_t kMaxBytes = std::size_t{64} << 20U;
constexpr int kMaxDepth = 256;
constexpr int kMaxAttributes = 256;

// No text holds this character: expat puts it between a namespace and a name.
constexpr char kSeparator[] = "\x01";

// Without memory expat has to get a null, and a program may be linked so that malloc() throws.
constexpr XML_Memory_Handling_Suite kMemory = {[](std::size_t size) { return std::calloc(1, size); },
                                               std::realloc, std::free};

// A parser that has met a larger text isn't kept, since it would hold on to what it took.
constexpr std::size_t kKeptParserBytes = std::size_t{64} << 10U;

using Parser = std::unique_ptr<XML_ParserStruct, decltype([](XML_Parser parser) { XML_ParserFree(parser); })>;

// One reading of a text by expat.
class Judge
{
  public:
    Judge(XML_Parser parser, Doctype doctype) : m_parser(parser), m_doctype(doctype)
    {
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, Begin, End);
        XML_SetStartNamespaceDeclHandler(parser, Declare);
        XML_SetStartCdataSectionHandler(parser, [](void* self) { Self(self).m_survey.sections = true; });
        XML_SetStartDoctypeDeclHandler(parser, Type);
        XML_SetXmlDeclHandler(parser, Version);
        XML_SetSkippedEntityHandler(parser, Entity);
    }

    std::optional<Survey> Run(std::string_view text, SyntaxError& error)
    {
        if (XML_Parse(m_parser, text.data(), static_cast<int>(text.size()), XML_TRUE) != XML_STATUS_ERROR)
            return m_survey;
        const XML_Error code = XML_GetErrorCode(m_parser);
        if (code == XML_ERROR_NO_MEMORY)
            throw std::bad_alloc();
        error = {static_cast<int>(XML_GetCurrentLineNumber(m_parser)),
                 code == XML_ERROR_ABORTED       ? m_refusal
                 : code == XML_ERROR_NO_ELEMENTS ? "the document ends before its root element does"
                                                 : XML_ErrorString(code),
                 static_cast<int>(XML_GetCurrentColumnNumber(m_parser)) + 1};
        return std::nullopt;
    }

  private:
    static Judge& Self(void* self) { return *static_cast<Judge*>(self); }

    static void Begin(void* self, const char* /*name*/, const char** attributes)
    {
        Judge& judge = Self(self);
        int count = judge.m_declared;
        while (count <= kMaxAttributes && attributes[0] != nullptr)
        {
            attributes += 2;
            ++count;
        }
        judge.m_declared = 0;
        if (count > kMaxAttributes)
            judge.Refuse("an element has more than 256 attributes");
        if (++judge.m_depth > kMaxDepth)
            judge.Refuse("the elements are nested too deeply");
        ++judge.m_survey.elements;
    }
    static void End(void* self, const char* /*name*/) { --Self(self).m_depth; }

    // Called ahead of the element that declares it.
    static void Declare(void* self, const char* /*prefix*/, const char* /*space*/)
    {
        Judge& judge = Self(self);
        ++judge.m_declared;
        judge.m_survey.innerSpaces = judge.m_survey.innerSpaces || judge.m_depth > 0;
    }

    static void Type(void* self, const char* /*name*/, const char* system, const char* publicId, int inner)
    {
        Judge& judge = Self(self);
        const bool named = system != nullptr || publicId != nullptr;
        if (inner != 0 || (named && judge.m_doctype == Doctype::NameAlone))
            judge.Refuse("a document type declaration is not accepted");
    }

    static void Version(void* self, const char* version, const char* /*encoding*/, int /*standalone*/)
    {
        const std::string_view number = version == nullptr ? "1.0" : version;
        if (!number.starts_with("1.") || number.find_first_not_of("0123456789", 2) != number.npos)
            Self(self).Refuse("the version of XML is not 1.0");
    }

    // Only a document with a named type gets here: elsewhere a reference to an unknown entity is an error.
    static void Entity(void* self, const char* /*name*/, int /*parameter*/)
    {
        Self(self).Refuse("a reference to an unknown entity is not accepted");
    }

    // No exception may pass the parser, which calls these operations.
    void Refuse(const char* why)
    {
        m_refusal = why;
        XML_StopParser(m_parser, XML_FALSE);
    }

    XML_Parser m_parser;
    const Doctype m_doctype;
    Survey m_survey;
    const char* m_refusal = nullptr;
    int m_depth = 0;
    int m_declared = 0; // by the element that comes next
};

// Parsers between two texts, with the memory that they have taken: as many as were at work at a time.
std::mutex gKeptLock;
std::array<Parser, 4> gKept;

// Takes one of them in place of null; otherwise keeps the parser, if there is room.
void SwapWithKept(Parser& parser)
{
    const std::lock_guard hold(gKeptLock);
    const auto place =
        std::ranges::find(gKept, parser == nullptr, [](const Parser& kept) { return kept != nullptr; });
    if (place != gKept.end())
        std::swap(parser, *place);
}

// Whoever takes it gives it back after a reading that ended well: one that ran out of memory ends.
Parser TakeParser()
{
    // Drawn once, so that nobody can choose names that fall on one place of the parser's tables.
    static const unsigned long salt = []
    {
        std::random_device device;
        return std::uniform_int_distribution<unsigned long>(1)(device);
    }();
    Parser parser;
    SwapWithKept(parser);
    if (parser == nullptr || XML_ParserReset(parser.get(), "UTF-8") == XML_FALSE)
        parser.reset(XML_ParserCreate_MM("UTF-8", &kMemory, kSeparator));
    if (parser == nullptr)
        throw std::bad_alloc();
    XML_SetHashSalt(parser.get(), salt);
    return parser;
}

std::optional<Survey> Refused(SyntaxError& error, int line, const char* reason)
{
    error = {line, reason, line == 0 ? 0 : 1};
    return std::nullopt;
}

// Ends of lines as XML knows them. pugixml leaves those in processing instructions as they are.
std::string WithPlainLineEnds(std::string_view text)
{
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\r')
            plain += text[i];
        else if (i + 1 == text.size() || text[i + 1] != '\n')
            plain += '\n';
    return plain;
}

pugi::xml_parse_result Load(std::string_view text, pugi::xml_document& tree, bool embed)
{
    constexpr unsigned kParts = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_wconv_attribute |
                                pugi::parse_ws_pcdata | pugi::parse_comments | pugi::parse_pi |
                                pugi::parse_doctype;
    const auto result = tree.load_buffer(
        text.data(), text.size(), embed ? kParts | pugi::parse_embed_pcdata : kParts, pugi::encoding_utf8);
    if (result.status == pugi::status_out_of_memory)
        throw std::bad_alloc();
    return result;
}

// Makes texts of them.
void ReplaceSections(pugi::xml_document& tree)
{
    std::vector<pugi::xml_node> sections;
    ForEachNode(tree,
                [&sections](pugi::xml_node node)
                {
                    if (node.type() == pugi::node_cdata)
                        sections.push_back(node);
                    return true;
                });
    for (const pugi::xml_node section : sections)
    {
        if (*section.value() != '\0' &&
            !section.parent().insert_child_before(pugi::node_pcdata, section).set_value(section.value()))
            throw std::bad_alloc();
        section.parent().remove_child(section);
    }
}
} // namespace

std::optional<Survey> Check(std::string_view text, SyntaxError& error, Doctype doctype)
{
    if (text.empty())
        return Refused(error, 1, "the document is empty");
    if (text.size() > kMaxBytes)
        return Refused(error, 0, "the document is too large");
    // Where it is allowed expat takes the text for UTF-16.
    if (const std::size_t nul = text.find('\0'); nul != std::string_view::npos)
        return Refused(error, static_cast<int>(std::count(text.begin(), text.begin() + nul, '\n')) + 1,
                       "the document holds a NUL character");
    Parser parser = TakeParser();
    const auto survey = Judge(parser.get(), doctype).Run(text, error);
    if (text.size() <= kKeptParserBytes)
        SwapWithKept(parser);
    return survey;
}

bool Build(std::string_view text, const Survey& survey, pugi::xml_document& tree, bool embed)
{
    const std::string plain = text.find('\r') == std::string_view::npos ? "" : WithPlainLineEnds(text);
    const bool loaded = Load(plain.empty() ? text : plain, tree, embed);
    if (survey.sections)
        ReplaceSections(tree);
    return loaded;
}

bool Read(std::string_view text, pugi::xml_document& tree, SyntaxError& error, Doctype doctype)
{
    const auto survey = Check(text, error, doctype);
    if (survey && Build(text, *survey, tree))
        return true;
    if (survey)
        Refused(error, 1, "the document can't be read");
    return false;
}

std::string Content(pugi::xml_node node)
{
    if (!node.first_child())
        return node.value();
    std::string text;
    ForEachNode(node,
                [&text](pugi::xml_node each)
                {
                    if (each.type() != pugi::node_comment && each.type() != pugi::node_pi)
                        text += each.value();
                    return true;
                });
    return text;
}

Lines::Lines(std::string_view text)
{
    const std::string plain = WithPlainLineEnds(text);
    for (std::size_t end = plain.find('\n'); end != std::string::npos; end = plain.find('\n', end + 1))
        m_ends.push_back(static_cast<std::ptrdiff_t>(end));
}

int Lines::Of(pugi::xml_node node) const
{
    const auto end = std::lower_bound(m_ends.begin(), m_ends.end(), node.offset_debug());
    return node ? static_cast<int>(end - m_ends.begin()) + 1 : 0;
}

} // namespace analytics::xml
