#include "Answer.h"

#include <soapH.h>

#include <xml/Text.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace
{
// Those of SOAP 1.2. The others are answered in the terms of the schema.
constexpr std::array<std::string_view, 2> kQuotedNamespaces = {"http://www.w3.org/2003/05/soap-envelope",
                                                               "http://www.w3.org/2003/05/soap-encoding"};

constexpr char kReplacement[] = "?";

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
        Replace(soap, *text, analytics::xml::ToXmlText(*text, kReplacement));
    for (SOAP_ENV__Detail* const detail : {fault->detail, fault->SOAP_ENV__Detail})
        if (detail != nullptr && detail->__any != nullptr)
            Replace(soap, detail->__any, Escaped(analytics::xml::ToXmlText(detail->__any, kReplacement)));
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
