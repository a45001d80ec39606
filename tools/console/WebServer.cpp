#include "console/WebServer.h"

#include "Failure.h"

#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>

#include <sys/resource.h>

#include <memory>
#include <optional>

namespace client
{
namespace
{

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;

constexpr std::size_t kMostHead = 16 << 10;
constexpr std::pair<const char*, const char*> kFields[] = {
    {"Content-Security-Policy", "default-src 'none'; script-src 'self'; style-src 'self'; "
                                "connect-src 'self'; img-src 'self' blob: data:; "
                                "frame-ancestors 'none'; base-uri 'none'; form-action 'none'"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cache-Control", "no-store"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
};

// A thousand silent connections need more descriptors than a shell's usual limit.
void AllowDescriptors()
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < 4096)
    {
        limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

} // namespace

// One connection, from request to request.
class WebSession : public std::enable_shared_from_this<WebSession>
{
  public:
    WebSession(tcp::socket socket, WebServer& server) : m_stream(std::move(socket)), m_server(server) {}

    void ReadHead()
    {
        m_parser.emplace();
        m_parser->header_limit(kMostHead);
        m_parser->body_limit(WebServer::kMostBody);
        // For the whole request, however it dribbles in.
        m_stream.expires_after(WebServer::kPatience);
        http::async_read_header(m_stream, m_buffer, *m_parser,
                                [self = shared_from_this()](beast::error_code error, std::size_t)
                                { self->Judge(error); });
    }

  private:
    void Judge(beast::error_code error)
    {
        if (error)
            return Fail(error);
        const auto& head = m_parser->get();
        // The body of a request that is refused isn't read, so that it costs no memory.
        if (const auto cookie = m_server.m_gate.Exchange(head))
            return Redirect(*cookie);
        if (const auto refusal = m_server.m_gate.Refuse(head))
            return Refuse(refusal->status, refusal->sentence);
        http::async_read(m_stream, m_buffer, *m_parser,
                         [self = shared_from_this()](beast::error_code failed, std::size_t)
                         { failed ? self->Fail(failed) : self->Ask(); });
    }

    void Fail(beast::error_code error)
    {
        if (error == http::error::body_limit)
            return Refuse(413, "The request is too large");
        if (error == http::error::header_limit)
            return Refuse(431, "The head of the request is too large");
        if (error.category() == make_error_code(http::error::bad_method).category() &&
            error != http::error::end_of_stream && error != http::error::partial_message)
            return Refuse(400, "This isn't an HTTP request");
        m_stream.close();
    }

    void Ask()
    {
        m_stream.expires_never();
        asio::post(m_server.m_workers,
                   [self = shared_from_this()]
                   {
                       auto& request = self->m_parser->get();
                       WebAnswer answer =
                           self->m_server.m_handler(std::string(request.method_string()),
                                                    std::string(request.target()), request.body());
                       asio::post(self->m_stream.get_executor(), [self, answer = std::move(answer)]() mutable
                                  { self->Answer(std::move(answer), self->m_parser->get().keep_alive()); });
                   });
    }

    void Refuse(unsigned status, const std::string& sentence)
    {
        Answer({status, "text/plain; charset=utf-8", sentence + ".\n"}, false);
    }

    void Redirect(const std::string& cookie)
    {
        m_answer = {};
        m_answer.set(http::field::set_cookie, cookie);
        m_answer.set(http::field::location, "/");
        Write(303, false);
    }

    void Answer(WebAnswer answer, bool keepAlive)
    {
        m_answer = {};
        m_answer.set(http::field::content_type, answer.type);
        m_answer.body() = std::move(answer.body);
        Write(answer.status, keepAlive);
    }

    void Write(unsigned status, bool keepAlive)
    {
        m_answer.result(status);
        for (const auto& [name, value] : kFields)
            m_answer.set(name, value);
        m_answer.keep_alive(keepAlive);
        m_answer.prepare_payload();
        if (m_parser->get().method() == http::verb::head)
            m_answer.body().clear();
        m_stream.expires_after(WebServer::kPatience);
        http::async_write(m_stream, m_answer,
                          [self = shared_from_this(), keepAlive](beast::error_code error, std::size_t)
                          {
                              if (!error && keepAlive)
                                  return self->ReadHead();
                              self->Drain();
                          });
    }

    // Closes only once the peer has read the answer: what it still sends would reset the connection.
    void Drain()
    {
        beast::error_code ignored;
        m_stream.socket().shutdown(tcp::socket::shutdown_send, ignored);
        m_stream.expires_after(std::chrono::seconds(1));
        Skip();
    }

    void Skip()
    {
        m_buffer.clear();
        m_stream.async_read_some(m_buffer.prepare(4096),
                                 [self = shared_from_this()](beast::error_code error, std::size_t)
                                 {
                                     if (!error)
                                         self->Skip();
                                 });
    }

    beast::tcp_stream m_stream;
    beast::flat_buffer m_buffer;
    std::optional<http::request_parser<http::string_body>> m_parser;
    http::response<http::string_body> m_answer;
    WebServer& m_server;
};

namespace
{

tcp::acceptor Listening(asio::io_context& io, unsigned short port)
{
    const tcp::endpoint endpoint(asio::ip::address_v4::loopback(), port);
    try
    {
        return tcp::acceptor(io, endpoint);
    }
    catch (const boost::system::system_error& error)
    {
        throw Failure(Exit::Usage, "Port " + std::to_string(port) + " of 127.0.0.1 can't be had: " +
                                       error.code().message() + ". Name another with --port, or none");
    }
}

} // namespace

WebServer::WebServer(unsigned short port, Handler handler)
    : m_acceptor(Listening(m_io, port)),
      m_handler(std::move(handler)),
      m_gate(m_acceptor.local_endpoint().port())
{
    AllowDescriptors();
}

std::string WebServer::Url() const
{
    return "http://127.0.0.1:" + std::to_string(m_acceptor.local_endpoint().port()) +
           "/?token=" + m_gate.Token();
}

void WebServer::Accept()
{
    m_acceptor.async_accept(
        [this](beast::error_code error, tcp::socket socket)
        {
            if (!error)
            {
                std::make_shared<WebSession>(std::move(socket), *this)->ReadHead();
                return Accept();
            }
            // Without descriptors: when some connection has ended.
            auto timer = std::make_shared<asio::steady_timer>(m_io, std::chrono::milliseconds(100));
            timer->async_wait([this, timer](beast::error_code) { Accept(); });
        });
}

void WebServer::Run()
{
    asio::signal_set signals(m_io, SIGINT, SIGTERM);
    signals.async_wait(
        [&](beast::error_code, int)
        {
            signals.clear();
            m_io.stop();
        });
    Accept();
    m_io.run();
    m_workers.stop();
    m_workers.join();
}

} // namespace client
