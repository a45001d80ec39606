#pragma once

#include "Access.h"

#include <soapH.h>

#include <string>

namespace client
{

// Why a call failed, as a sentence that says what was wrong and what to do.
struct Cause
{
    enum Kind
    {
        Fault,    // the service answered, and refused
        NoAnswer, // it closed the connection without a word
        Trouble   // anything else: no connection, no access, no time, no such service
    };
    Kind kind;
    std::string sentence;
};

// Of the context's last call. `timeIsUp`: it took as long as it was allowed.
Cause Explain(soap& context, const Access& access, bool timeIsUp);
// The service at `url` took too long.
std::string TooSlow(const std::string& url);

} // namespace client
