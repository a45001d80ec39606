#pragma once

#include "net/ServerSettings.h"
#include "request/Request.h"

#include <string>

namespace tarno::osa
{

// Why the server answers by itself what never becomes a request.
enum class Refusal
{
    NotHttp,
    Truncated,
    TooSlow,
    HeaderTooLarge,
    TooLarge,
    NotPost,
    NeedsTls,
    Unauthorized,
    TooManyAttempts,
    Busy,    // with passwords
    NoMemory // for a large document
};

enum class SoapVersion
{
    Soap11,
    Soap12
};

// The version that goes with a Content-Type; 1.1 for any that is not SOAP 1.2's.
SoapVersion SoapVersionOf(const std::string& contentType);

// The largest header that a request may have, in bytes.
std::size_t HeaderLimit(std::size_t maxRequestBytes);

// The whole HTTP response, with a SOAP fault as its body. Before a whole header has come, nobody knows
// which SOAP the client speaks; then it is 1.1.
// The answer to HEAD is the same without the body.
std::string ErrorResponse(Refusal refusal, const Limits& limits, SoapVersion version = SoapVersion::Soap11,
                          bool head = false);

// What a client is told of the service and of itself, for the head of its answer: "\r\nNAME: VALUE" each.
std::string IdentityFields(const analytics::platform::Caller& caller);

} // namespace tarno::osa
