#include "Explanation.h"

#include "Text.h"
#include "TlsTrouble.h"

#include <cstring>

namespace client
{
namespace
{

struct Hint
{
    const char* fault; // a text that the fault holds
    const char* hint;
};
constexpr Hint kHints[] = {
    {" does not exist", "'varlo-analytics profile list' shows the profiles that do"},
    {"Unsupported behavior Id",
     "'varlo-analytics availability' shows the behaviors that the service has; a profile "
     "without any behavior gives the same answer"},
    {"Invalid profile", "The document is empty; 'varlo-analytics behavior example' shows a full one"},
    {"The behavior document could not be read",
     "Compare it with what 'varlo-analytics behavior example' or 'behavior default' gives"},
    {"The scene document could not be read", "Compare it with what 'varlo-analytics scene default' gives"},
    {"The profile name is longer", "Give it a shorter one"},
    {"a character that XML does not allow", "Give it another one"},
    {" document has more than ", "Nothing was stored; draw zones with fewer points"},
    {"The profile would hold more than",
     "Nothing was stored; delete a behavior of it, or use another profile"},
    {" has no behavior ", "'varlo-analytics availability PROFILE' shows those that it has"},
    {" may not change profiles",
     "An administrator may; 'varlo-analytics status' shows who you are to the service"},
    {" may not run or stop anything",
     "An operator or an administrator may; 'varlo-analytics status' shows who you are to the service"},
    {"method name or namespace not recognized", "It speaks SOAP but is another service; look at the address"},
};

std::string Text(const char* const* text)
{
    return text == nullptr || *text == nullptr ? "" : Trimmed(*text);
}

std::string OfFault(soap& context)
{
    std::string sentence = Text(soap_faultstring(&context));
    if (const std::string detail = Text(soap_faultdetail(&context)); !detail.empty())
        sentence += " (" + detail + ")";
    for (const Hint& hint : kHints)
        if (sentence.find(hint.fault) != std::string::npos)
            return "The service says: " + Sentence(sentence) + " " + Sentence(hint.hint);
    return "The service says: " + Sentence(sentence);
}

std::string OfConnection(const soap& context, const std::string& url)
{
    const std::string reason = context.errnum != 0 ? std::strerror(context.errnum) : "the host is unknown";
    return "No connection to " + url + ": " + reason +
           ". Look whether the service runs and the address is right (--url).";
}

std::string OfTls(soap& context, const std::string& url)
{
    const std::string reason = Text(soap_faultdetail(&context));
    return "No TLS connection to " + url + (reason.empty() ? "" : ": " + reason) +
           ". Look whether the service speaks https there, and whether it wants a certificate (--cert).";
}

std::string OfSilence(const Access& access)
{
    std::string sentence = "The service at " + access.url + " closed the connection without an answer. ";
    if (access.url.compare(0, 8, "https://") == 0 && access.certificate.empty())
        sentence += "It may want a certificate of yours (--cert). ";
    return sentence + "Try again; if it goes on, look at the service's log.";
}

std::string OfStatus(int status, const Access& access)
{
    const std::string front = "The service at " + access.url;
    switch (status)
    {
    case 401:
        return access.user.empty() ? front + " wants a user and a password. Name the user with --user."
                                   : front + " refuses the user " + access.user +
                                         " or the password. Look at the name (--user) and at the password.";
    case 403:
        return front + " denies access. Look which user (--user) or certificate (--cert) it wants.";
    case 404:
    case 405:
        return front + " answers with HTTP status " + std::to_string(status) +
               ": there is no such service at this address.";
    case 408:
        return front + " had to wait too long for the request. Try again, or look at the network.";
    case 413:
        return front +
               " refuses a request of this size. Send a smaller document, or raise its maxRequestBytes.";
    case 429:
    case 503:
        return front + " has too much to do at the moment. Try again later.";
    default:
        return front + " answers with HTTP status " + std::to_string(status) +
               ". Look whether the address is right (--url).";
    }
}

} // namespace

std::string TooSlow(const std::string& url)
{
    return "The service at " + url + " took too long. Try again, or allow it more time (--timeout).";
}

Cause Explain(soap& context, const Access& access, bool timeIsUp)
{
    const std::string tls = TakeTlsTrouble(access.url);
    const int error = context.error;
    const std::string& url = access.url;
    const int status = context.status;
    if (status == 401 || status == 403 || (error >= 201 && error < 600))
        return {Cause::Trouble, OfStatus(status == 401 || status == 403 ? status : error, access)};
    if (error == SOAP_FAULT || error == SOAP_CLI_FAULT || error == SOAP_SVR_FAULT)
        return {Cause::Fault, OfFault(context)};
    if (timeIsUp)
        return {Cause::Trouble, TooSlow(url)};
    if (!tls.empty())
        return {Cause::Trouble, tls};
    if (error == SOAP_SSL_ERROR)
        return {Cause::Trouble, OfTls(context, url)};
    if (error == SOAP_TCP_ERROR)
        return {Cause::Trouble, OfConnection(context, url)};
    if (error == SOAP_EOF)
        return {Cause::NoAnswer, OfSilence(access)};
    return {Cause::Trouble,
            "What " + url + " answers isn't understood. Look whether it is the analytics service (--url)."};
}

} // namespace client
