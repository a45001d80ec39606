#pragma once

#include "files/FileHandle.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
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
    unsigned int bufferBytes = 0;       // send and receive buffer of each connection; 0 leaves the system's
    std::string scheme = "http";        // for the URL
    std::string settledBy = "--listen"; // where an operator chooses the address
};

// Throws SocketException with a sentence for the operator if the address is none.
void CheckAddress(const ListenOptions& options);

// A connection that was accepted: a socket that doesn't block, and whose it is.
struct Accepted
{
    analytics::platform::FileHandle socket;
    boost::asio::ip::address peer; // unspecified if it is none of IP
};

// The listening socket, which doesn't block. One thread at a time.
class Listener
{
  public:
    using Protocol = boost::asio::ip::tcp;

    // Returns the URL. Throws SocketException (kBindError) with a sentence for the operator.
    std::string Listen(const ListenOptions& options);
    // After Listen(), until Close(). Without a socket the reason is in errno.
    Accepted Accept();
    // Nothing is accepted from then on, and the port is free.
    void Close();
    int Descriptor();

  private:
    void Open(const Protocol::endpoint& endpoint, const ListenOptions& options);

    boost::asio::io_context m_context; // which nothing runs in
    Protocol::acceptor m_acceptor{m_context};
};

} // namespace tarno::osa
