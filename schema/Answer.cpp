#include "Answer.h"

#include <soapH.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace
{
// Those of SOAP 1.2. The others are answered in the terms of the schema.
constexpr std::array<std::string_view, 2> kQuotedNamespaces = {"http://www.w3.org/2003/05/soap-envelope",
                                                               "http://www.w3.org/2003/05/soap-encoding"};

constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000}; // by the number of bytes

std::size_t Announced(unsigned char first)
{
    if (first < 0x80)
        return 1;
    return first < 0xC0 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF8 ? 4 : 0;
}

bool IsXmlCharacter(char32_t code)
{
    if (code < 0x20)
        return code == '\t' || code == '\n' || code == '\r';
    return code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF) && code != 0xFFFE && code != 0xFFFF;
}

// The bytes of the character that `text` begins with; 0 if it is none that XML can hold.
std::size_t FirstCharacter(std::string_view text)
{
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t size = Announced(first);
    if (size == 0 || size > text.size())
        return 0;
    char32_t code = size == 1 ? first : first & (0x7FU >> size);
    for (const char c : text.substr(1, size - 1))
    {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0U) != 0x80)
            return 0;
        code = code << 6U | (byte & 0x3FU);
    }
    return code >= kSmallest[size] && IsXmlCharacter(code) ? size : 0;
}

std::string Mended(std::string_view text)
{
    std::string result;
    while (!text.empty())
    {
        const std::size_t size = FirstCharacter(text);
        result += size == 0 ? "?" : text.substr(0, size);
        text.remove_prefix(size == 0 ? 1 : size);
    }
    return result;
}
template <class Character>
void Replace(soap* soap, Character*& text, const std::string& mended)
{
    if (mended != text)
        text = soap_strdup(soap, mended.c_str());
}

// What is written as it stands, although it is plain text: what() of an exception, or the body of a
// message whose header the runtime took for an error.
std::string Escaped(std::string_view text)
{
    std::string result;
    for (const char c : text)
        result += c == '<' ? "&lt;" : c == '&' ? "&amp;" : c == '>' ? "&gt;" : std::string(1, c);
    return result;
}

void MendFault(soap* soap)
{
    SOAP_ENV__Fault* const fault = soap->fault;
    if (fault == nullptr)
        return;
    if (const char** const text = soap_faultstring(soap); text != nullptr && *text != nullptr)
        Replace(soap, *text, Mended(*text));
    for (SOAP_ENV__Detail* const detail : {fault->detail, fault->SOAP_ENV__Detail})
        if (detail != nullptr && detail->__any != nullptr)
            Replace(soap, detail->__any, Escaped(Mended(detail->__any)));
}

// A namespace of the message that matches a pattern of ours would take the place of our own.
void MendNamespaces(soap* soap)
{
    for (Namespace* row = soap->local_namespaces; row != nullptr && row->id != nullptr; ++row)
    {
        if (row->out == nullptr || std::ranges::find(kQuotedNamespaces, row->out) != kQuotedNamespaces.end())
            continue;
        SOAP_FREE(soap, row->out);
        row->out = nullptr;
    }
    if (soap->version == 0)
        soap_set_version(soap, 1);
}
} // namespace

void soap_mend_answer(soap* soap)
{
    // No operation has attachments: what came as DIME is answered in plain XML too.
    soap->mode &= ~static_cast<soap_mode>(SOAP_ENC_DIME);
    MendNamespaces(soap);
    MendFault(soap);
}
