#pragma once

#include "console/Gate.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/thread_pool.hpp>

#include <chrono>
#include <functional>
#include <string>

namespace client
{

struct WebAnswer
{
    unsigned status = 200;
    std::string type = "application/json";
    std::string body;
};

// Serves HTTP on 127.0.0.1 to whom the gate lets in. One thread reads and writes, so that silent connections
// cost little; what is asked is answered on a few others.
class WebServer
{
  public:
    // Called on several threads at a time; `body` is empty for GET.
    using Handler = std::function<WebAnswer(const std::string& method, const std::string& target,
                                            const std::string& body)>;

    static constexpr std::uint64_t kMostBody = 8 << 20;
    static constexpr std::chrono::seconds kPatience{30};

    // Takes the port, 0 for a free one. Throws Failure if it can't be had.
    WebServer(unsigned short port, Handler handler);

    // With the token.
    std::string Url() const;
    // Until SIGINT or SIGTERM; then what is being answered is finished. A second signal ends the program.
    void Run();

  private:
    friend class WebSession;
    void Accept();

    boost::asio::io_context m_io{1};
    boost::asio::thread_pool m_workers{4};
    boost::asio::ip::tcp::acceptor m_acceptor;
    Handler m_handler;
    Gate m_gate;
};

} // namespace client
