#include "Answer.h"

#include "Expect.h"

#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

#include <cstring>
#include <memory>
#include <regex>

namespace fuzzing
{
namespace
{
constexpr const char* kEnvelopes[] = {"http://schemas.xmlsoap.org/soap/envelope/",
                                      "http://www.w3.org/2003/05/soap-envelope"};

// What a client that asked for it is told ahead of its answer.
constexpr char kContinue[] = "HTTP/1.1 100 Continue\r\n\r\n";

using Document = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

bool Is(const xmlNode* node, const char* name, const char* space)
{
    const auto* const chars = reinterpret_cast<const char*>(node->name);
    return std::strcmp(chars, name) == 0 && node->ns != nullptr &&
           std::strcmp(reinterpret_cast<const char*>(node->ns->href), space) == 0;
}

// The schema of the service, for one document at a time.
class Schema
{
  public:
    Schema()
    {
        xmlSchemaParserCtxt* const parser = xmlSchemaNewParserCtxt(SCHEMA_FILE);
        m_schema = xmlSchemaParse(parser);
        xmlSchemaFreeParserCtxt(parser);
        Expect(m_schema != nullptr, "the schema can be read");
        m_context = xmlSchemaNewValidCtxt(m_schema);
    }
    ~Schema()
    {
        xmlSchemaFreeValidCtxt(m_context);
        xmlSchemaFree(m_schema);
    }

    bool Allows(xmlNode* element) const { return xmlSchemaValidateOneElement(m_context, element) == 0; }

  private:
    xmlSchema* m_schema;
    xmlSchemaValidCtxt* m_context;
};

// The length of the body, as the header says it.
std::size_t BodyLength(const std::string& header)
{
    std::smatch length;
    static const std::regex field("\r\nContent-Length: (\\d+)\r\n");
    return std::regex_search(header, length, field) ? std::stoul(length[1]) : 0;
}

void CheckEnvelope(const std::string& body, const std::string& answer)
{
    const Document document(
        xmlReadMemory(body.data(), static_cast<int>(body.size()), nullptr, nullptr, XML_PARSE_NONET),
        xmlFreeDoc);
    Expect(document != nullptr, "an answer is well-formed", answer);
    xmlNode* const root = xmlDocGetRootElement(document.get());
    for (const char* const space : kEnvelopes)
    {
        if (!Is(root, "Envelope", space))
            continue;
        xmlNode* const soapBody = xmlLastElementChild(root);
        Expect(soapBody != nullptr && Is(soapBody, "Body", space), "an envelope ends with a body", answer);
        xmlNode* const content = xmlFirstElementChild(soapBody);
        Expect(content != nullptr && xmlNextElementSibling(content) == nullptr, "a body holds one element",
               answer);
        static const Schema schema;
        Expect(Is(content, "Fault", space) || schema.Allows(content), "a response is valid", answer);
        return;
    }
    Expect(false, "an answer is an envelope", answer);
}
} // namespace

void CheckAnswer(std::string answer, const std::string& request)
{
    while (answer.starts_with(kContinue))
        answer.erase(0, std::strlen(kContinue));
    if (answer.empty())
        return;
    const std::size_t end = answer.find("\r\n\r\n");
    Expect(end != std::string::npos, "an answer has a header", request + "\n" + answer);
    const std::string header = answer.substr(0, end + 2);
    const std::string body = answer.substr(end + 4);
    static const std::regex status("HTTP/1\\.[01] [1-5][0-9][0-9] ");
    Expect(std::regex_search(header, status, std::regex_constants::match_continuous),
           "an answer begins with a status line", request + "\n" + answer);
    Expect(BodyLength(header) == body.size(), "an answer is as long as it says", request + "\n" + answer);
    if (!body.empty())
        CheckEnvelope(body, request + "\n" + answer);
}

} // namespace fuzzing
