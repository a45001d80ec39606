#include "net/Refusal.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>

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
    std::uint64_t (*limit)(const Limits&);
};

constexpr std::array kRows = {
    Row{Refusal::NotHttp, "400 Bad Request",
        "The bytes received are not a valid HTTP/1.1 request; post a SOAP envelope with its Content-Length",
        nullptr},
    Row{Refusal::Truncated, "400 Bad Request",
        "The connection ended in the middle of the request; send the whole request before closing", nullptr},
    Row{Refusal::TooSlow, "408 Request Timeout",
        "The request did not arrive whole within # seconds; send it faster or in smaller parts", Seconds},
    Row{Refusal::HeaderTooLarge, "413 Payload Too Large",
        "The HTTP header of the request is larger than # bytes; send fewer or shorter header fields",
        HeaderBytes},
    Row{Refusal::TooLarge, "413 Payload Too Large",
        "The request is larger than the # bytes that this server accepts; send a smaller one, or raise "
        "maxRequestBytes in the settings document",
        Bytes},
};

std::string Sentence(const Row& row, const Limits& limits)
{
    std::string text = row.text;
    if (row.limit != nullptr)
        text.replace(text.find('#'), 1, std::to_string(row.limit(limits)));
    return text;
}

std::string FaultEnvelope(const std::string& sentence)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\"><SOAP-ENV:Body>"
           "<SOAP-ENV:Fault><faultcode>SOAP-ENV:Client</faultcode><faultstring>" +
           sentence + "</faultstring></SOAP-ENV:Fault></SOAP-ENV:Body></SOAP-ENV:Envelope>\n";
}

} // namespace

std::size_t HeaderLimit(std::size_t maxRequestBytes)
{
    return std::min<std::size_t>(maxRequestBytes, 65'536);
}

std::string RefusalResponse(Refusal refusal, const Limits& limits)
{
    const auto* const row = std::find_if(
        kRows.begin(), kRows.end(), [refusal](const Row& candidate) { return candidate.refusal == refusal; });
    assert(row != kRows.end());
    const std::string body = FaultEnvelope(Sentence(*row, limits));
    return std::string("HTTP/1.1 ") + row->status +
           "\r\nContent-Type: text/xml; charset=utf-8\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

} // namespace tarno::osa
