#include "net/Listener.h"

#include <tarno/osa/SocketException.h>

#include <boost/asio/error.hpp>
#include <boost/asio/ip/address.hpp>

#include <fcntl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <sstream>

namespace tarno::osa
{
namespace
{

namespace asio = boost::asio;
using Error = boost::system::error_code;
using Tcp = asio::ip::tcp;

struct Advice
{
    int error;
    const char* text;
};

constexpr std::array kAdvice = {
    Advice{asio::error::address_in_use,
           " is in use by another program; stop it or choose another port with "},
    Advice{asio::error::access_denied,
           " needs privileges that this process lacks; choose a port above 1023 with "},
    Advice{EADDRNOTAVAIL, " is no address of this machine; choose one that it has with "},
};

template <class T>
std::string Text(const T& value)
{
    std::ostringstream text;
    text << value;
    return text.str();
}

std::string Sentence(const Tcp::endpoint& endpoint, const Error& error, const std::string& settledBy)
{
    const auto* const row =
        std::find_if(kAdvice.begin(), kAdvice.end(),
                     [&error](const Advice& advice) { return advice.error == error.value(); });
    if (row != kAdvice.end())
        return Text(endpoint) + row->text + settledBy;
    return Text(endpoint) + " can't be listened on (" + error.message() + "); choose another with " +
           settledBy;
}

Tcp::endpoint EndpointOf(const ListenOptions& options)
{
    Error error;
    const auto address = asio::ip::make_address(options.address, error);
    if (error)
        throw SocketException(
            SocketException::kBindError,
            "\"" + options.address +
                "\" is no numeric IPv4 or IPv6 address; choose one such as 127.0.0.1 with " +
                options.settledBy);
    return {address, options.port};
}

} // namespace

void CheckAddress(const ListenOptions& options) { EndpointOf(options); }

std::string Listener::Listen(const ListenOptions& options)
{
    const Tcp::endpoint endpoint = EndpointOf(options);
    try
    {
        Open(endpoint, options);
        return options.scheme + "://" + Text(m_acceptor.local_endpoint()) + "/";
    }
    catch (const boost::system::system_error& failure)
    {
        Close();
        throw SocketException(SocketException::kBindError,
                              Sentence(endpoint, failure.code(), options.settledBy));
    }
}

void Listener::Open(const Tcp::endpoint& endpoint, const ListenOptions& options)
{
    m_acceptor.open(endpoint.protocol());
    m_acceptor.non_blocking(true);
    // A program that this process starts gets none of it.
    fcntl(m_acceptor.native_handle(), F_SETFD, FD_CLOEXEC);
    m_acceptor.set_option(asio::socket_base::reuse_address(true));
    if (options.bufferBytes > 0)
    {
        // Accepted connections inherit them.
        const int bytes = static_cast<int>(std::min(options.bufferBytes, 1U << 30));
        m_acceptor.set_option(asio::socket_base::receive_buffer_size(bytes));
        m_acceptor.set_option(asio::socket_base::send_buffer_size(bytes));
    }
    m_acceptor.bind(endpoint);
    m_acceptor.listen(options.backlog);
}

Accepted Listener::Accept()
{
    Tcp::endpoint peer;
    socklen_t size = static_cast<socklen_t>(peer.capacity());
    Accepted accepted;
    accepted.socket = analytics::platform::FileHandle(
        ::accept4(m_acceptor.native_handle(), peer.data(), &size, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (accepted.socket)
        accepted.peer = peer.address();
    return accepted;
}

int Listener::Descriptor() { return m_acceptor.native_handle(); }

void Listener::Close()
{
    Error ignored; // It listens no more, whatever the system says.
    m_acceptor.close(ignored);
}

} // namespace tarno::osa
