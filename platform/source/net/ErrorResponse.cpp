#include "net/ErrorResponse.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <string_view>

namespace tarno::osa
{
namespace
{

std::uint64_t Bytes(const Limits& limits) { return limits.maxRequestBytes; }
std::uint64_t HeaderBytes(const Limits& limits) { return HeaderLimit(limits.maxRequestBytes); }
std::uint64_t Seconds(const Limits& limits)
{
    return static_cast<std::uint64_t>(std::chrono::ceil<std::chrono::seconds>(limits.requestTime).count());
}

struct Row
{
    Refusal refusal;
    const char* status;
    const char* text; // '#' stands for the limit
    std::uint64_t (*limit)(const Limits&) = nullptr;
    const char* fields = "";
};

constexpr std::array kRows = {
    Row{Refusal::NotHttp, "400 Bad Request",
        "The bytes received are not a valid HTTP/1.1 request; post a SOAP envelope with its Content-Length"},
    Row{Refusal::Truncated, "400 Bad Request",
        "The connection ended in the middle of the request; send the whole request before closing"},
    Row{Refusal::TooSlow, "408 Request Timeout",
        "The request did not arrive whole within # seconds; send it faster or in smaller parts", Seconds},
    Row{Refusal::HeaderTooLarge, "413 Payload Too Large",
        "The HTTP header of the request is larger than # bytes; send fewer or shorter header fields",
        HeaderBytes},
    Row{Refusal::TooLarge, "413 Payload Too Large",
        "The request is larger than the # bytes that this server accepts; send a smaller one, or raise "
        "maxRequestBytes in the settings document",
        Bytes},
    Row{Refusal::NotPost, "405 Method Not Allowed",
        "This service takes requests by the HTTP method POST only; post a SOAP envelope", nullptr,
        "Allow: POST\r\n"},
    Row{Refusal::NeedsTls, "400 Bad Request",
        "This address is served through TLS only; use a URL that begins with https"},
    Row{Refusal::Unauthorized, "401 Unauthorized",
        "The request has no valid user name and password; send those of a user of this service by HTTP Basic",
        nullptr, "WWW-Authenticate: Basic realm=\"Video analytics\", charset=\"UTF-8\"\r\n"},
    Row{Refusal::TooManyAttempts, "429 Too Many Requests",
        "Too many wrong passwords have come from this address; wait a while, then send the right one",
        nullptr, "Retry-After: 10\r\n"},
    Row{Refusal::Busy, "503 Service Unavailable",
        "Too many passwords are being verified at this moment; send the request again a little later",
        nullptr, "Retry-After: 5\r\n"},
    Row{Refusal::NoMemory, "503 Service Unavailable",
        "Too many large documents are being worked on at this moment; send the request again a little later",
        nullptr, "Retry-After: 5\r\n"},
};

std::string Sentence(const Row& row, const Limits& limits)
{
    std::string text = row.text;
    if (row.limit != nullptr)
        text.replace(text.find('#'), 1, std::to_string(row.limit(limits)));
    return text;
}

std::string FaultEnvelope(const std::string& status, const std::string& sentence, SoapVersion version)
{
    const bool soap11 = version == SoapVersion::Soap11;
    const bool client = status.starts_with('4'); // else the same request may succeed later
    return std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"") +
           (soap11 ? "http://schemas.xmlsoap.org/soap/envelope/"
                   : "http://www.w3.org/2003/05/soap-envelope") +
           "\"><SOAP-ENV:Body><SOAP-ENV:Fault>" +
           (soap11
                ? std::string("<faultcode>SOAP-ENV:") + (client ? "Client" : "Server") +
                      "</faultcode><faultstring>"
                : std::string("<SOAP-ENV:Code><SOAP-ENV:Value>SOAP-ENV:") + (client ? "Sender" : "Receiver") +
                      "</SOAP-ENV:Value></SOAP-ENV:Code><SOAP-ENV:Reason><SOAP-ENV:Text xml:lang=\"en\">") +
           sentence + (soap11 ? "</faultstring>" : "</SOAP-ENV:Text></SOAP-ENV:Reason>") +
           "</SOAP-ENV:Fault></SOAP-ENV:Body></SOAP-ENV:Envelope>\n";
}

} // namespace

std::size_t HeaderLimit(std::size_t maxRequestBytes)
{
    return std::min<std::size_t>(maxRequestBytes, 65'536);
}

SoapVersion SoapVersionOf(const std::string& contentType)
{
    constexpr std::string_view kSoap12 = "application/soap+xml";
    const bool soap12 = strncasecmp(contentType.c_str(), kSoap12.data(), kSoap12.size()) == 0;
    return soap12 ? SoapVersion::Soap12 : SoapVersion::Soap11;
}

std::string ErrorResponse(Refusal refusal, const Limits& limits, SoapVersion version, bool head)
{
    const auto* const row = std::find_if(
        kRows.begin(), kRows.end(), [refusal](const Row& candidate) { return candidate.refusal == refusal; });
    assert(row != kRows.end());
    const std::string body = FaultEnvelope(row->status, Sentence(*row, limits), version);
    const char* const type = version == SoapVersion::Soap11 ? "text/xml" : "application/soap+xml";
    return std::string("HTTP/1.1 ") + row->status + "\r\nContent-Type: " + type +
           "; charset=utf-8\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + row->fields +
           "Connection: close\r\n\r\n" + (head ? "" : body);
}

// A name may hold whatever a certificate can.
std::string IdentityFields(const analytics::platform::Caller& caller)
{
    std::string name;
    for (const char letter : caller.name)
    {
        if (letter > ' ' && letter < 127 && letter != '%' && letter != ';')
        {
            name += letter;
            continue;
        }
        const auto byte = static_cast<unsigned char>(letter);
        name += '%';
        name += "0123456789ABCDEF"[byte / 16];
        name += "0123456789ABCDEF"[byte % 16];
    }
    return std::string("\r\nVarlo-Analytics-Version: ") + VERSION + "\r\nVarlo-Analytics-Caller: " + name +
           "; role=" + analytics::platform::NameOf(caller.role);
}

} // namespace tarno::osa
