#pragma once

#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>

#include <optional>
#include <string>

namespace client
{

// Lets in the one browser that came with the token, and nothing that another page makes a browser send. The
// page is served on a port that every program and every page of the machine can reach.
class Gate
{
  public:
    using Head = boost::beast::http::request_header<>;

    // Makes a token of 32 random bytes. `port` is where the page is served.
    explicit Gate(unsigned short port);

    const std::string& Token() const { return m_token; }

    // The status of the refusal and a sentence; nothing for a request that may pass.
    struct Refusal
    {
        unsigned status;
        const char* sentence;
    };
    std::optional<Refusal> Refuse(const Head& head) const;
    // The Set-Cookie of the request that brings the token, at its first time; the token is used up then.
    std::optional<std::string> Exchange(const Head& head);

  private:
    bool HostIsOurs(const Head& head) const;
    bool HasCookie(const Head& head) const;

    std::string m_port;
    std::string m_token;
    std::string m_cookie;
    bool m_used = false;
};

// `bytes` random ones in hexadecimal digits. Throws Failure if the system has none.
std::string RandomDigits(std::size_t bytes);

} // namespace client
