#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <cstdint>
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

// The listening socket. Many threads may accept at a time, each waiting until there is a connection; the
// system calls them in turn, one for each connection.
class Listener
{
  public:
    using Protocol = boost::asio::ip::tcp;

    // Returns the URL. Throws SocketException (kBindError) with a sentence for the operator.
    std::string Listen(const ListenOptions& options);
    // After Listen(), until Close(). The socket of a connection; -1 with the reason in errno, also after
    // End().
    int Accept();
    // Nothing is accepted from then on; whoever waits in Accept() returns. On the thread of Close().
    void End();
    // When nobody calls Accept() any more. The port is free then.
    void Close();
    Protocol ConnectionProtocol() const { return m_protocol; }

  private:
    void Open(const Protocol::endpoint& endpoint, const ListenOptions& options);

    boost::asio::io_context m_context; // which nothing runs in
    Protocol::acceptor m_acceptor{m_context};
    Protocol m_protocol = Protocol::v4();
    int m_socket = -1; // the acceptor's, for all threads
};

} // namespace tarno::osa
