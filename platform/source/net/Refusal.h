#pragma once

#include "net/Limits.h"

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
    TooLarge
};

// The largest header that a request may have, in bytes.
std::size_t HeaderLimit(std::size_t maxRequestBytes);

// The whole HTTP response, with a SOAP 1.1 fault as its body: by then nobody knows which SOAP the
// client would have spoken.
std::string RefusalResponse(Refusal refusal, const Limits& limits);

} // namespace tarno::osa
