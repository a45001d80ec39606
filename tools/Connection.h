#pragma once

#include "Access.h"

#include <soapH.h>

#include <map>
#include <optional>
#include <string>

namespace client
{

// A gSOAP context for calls to one service: timeouts, access, TLS, and a sentence for what goes wrong.
class Connection
{
  public:
    using Clock = std::chrono::steady_clock;

    Connection(const Access& access, std::optional<Clock::time_point> deadline);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void Deadline(Clock::time_point deadline) { m_deadline = deadline; }

    // Makes one call through the generated function. What the response points to lives until the next call.
    template <class Request, class Response>
    Response Call(int (*call)(soap*, const char*, const char*, Request*, Response*), Request& request)
    {
        Begin();
        Response response;
        if (call(&m_soap, m_access.url.c_str(), "", &request, &response) != SOAP_OK)
            Fail();
        return response;
    }

    // What the address gives to GET: at most `most` bytes, or where it redirects to.
    struct Fetched
    {
        std::string body;
        std::string location; // empty: no redirect
    };
    Fetched Get(std::size_t most);

    // A field of the last answer's head, which begins with "Varlo-Analytics-"; empty if it isn't there.
    std::string Field(const std::string& name) const;

  private:
    struct IgnoringCase
    {
        bool operator()(const std::string& one, const std::string& other) const;
    };
    static int TakeField(soap* context, const char* name, const char* value);
    // Hooks of the context: its own timeouts begin anew with each piece, ours don't.
    static std::size_t Receive(soap* context, char* buffer, std::size_t size);
    static int Send(soap* context, const char* data, std::size_t size);
    // Keeps a session of the last connection for the next one.
    static int Keep(SSL* connection, SSL_SESSION* session);
    // What is left of the call's time, as the context takes it; 0 if nothing.
    int Left() const;
    // Frees what the last call has left.
    void Clear();
    void UseTls();
    void Begin();
    [[noreturn]] void Fail();

    Access m_access;
    std::optional<Clock::time_point> m_deadline;
    Clock::time_point m_end;      // of the call
    std::size_t m_receivable = 0; // bytes that the answer may still have
    soap m_soap;
    std::size_t (*m_receive)(soap*, char*, std::size_t);
    int (*m_send)(soap*, const char*, std::size_t);
    int (*m_parseField)(soap*, const char*, const char*);
    std::map<std::string, std::string, IgnoringCase> m_fields;
};

} // namespace client
