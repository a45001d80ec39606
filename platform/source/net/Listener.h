#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include <cstdint>
#include <functional>
#include <string>

namespace tarno::osa
{

struct ListenOptions
{
    std::string address = "127.0.0.1"; // a numeric IPv4 or IPv6 address
    std::uint16_t port = 0;            // 0 takes a free port
    std::uint16_t backlog = 128;
    unsigned int bufferBytes = 0; // send and receive buffer of each connection; 0 leaves the system's
    std::string scheme = "http";  // for the URL
};

// The listening socket. Whatever goes wrong with a connection that comes in, it tries again a little
// later. After Listen() on one thread.
class Listener
{
  public:
    using Socket = boost::asio::ip::tcp::socket;

    Listener(boost::asio::io_context& context, std::function<void(Socket)> accepted);

    // Returns the URL. Throws SocketException (kBindError) with a sentence for the operator.
    std::string Listen(const ListenOptions& options);
    // Whether to accept. While not, connections wait in the kernel's queue.
    void Accepting(bool wanted);
    void Close();

  private:
    void Open(const boost::asio::ip::tcp::endpoint& endpoint, const ListenOptions& options);
    void AcceptNext();
    void OnAccepted(const boost::system::error_code& error, Socket socket);
    void TryLater();

    boost::asio::ip::tcp::acceptor m_acceptor;
    boost::asio::steady_timer m_timer;
    const std::function<void(Socket)> m_accepted;
    bool m_wanted = false;
    bool m_busy = false; // waits for a connection, or for a better time
};

} // namespace tarno::osa
