#include "net/Listener.h"

#include <tarno/osa/SocketException.h>

#include <boost/asio/error.hpp>
#include <boost/asio/ip/address.hpp>

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <sstream>
#include <utility>

namespace tarno::osa
{
namespace
{

namespace asio = boost::asio;
using Error = boost::system::error_code;
using Tcp = asio::ip::tcp;

// Out of file descriptors or memory: as a rule some connection ends within this time.
constexpr std::chrono::milliseconds kBetterTime(100);

struct Advice
{
    int error;
    const char* text;
};

constexpr std::array kAdvice = {
    Advice{asio::error::address_in_use,
           " is in use by another program; stop it or choose another port with --listen"},
    Advice{asio::error::access_denied,
           " needs privileges that this process lacks; choose a port above 1023 with --listen"},
    Advice{EADDRNOTAVAIL, " is no address of this machine; choose one that it has with --listen"},
};

template <class T>
std::string Text(const T& value)
{
    std::ostringstream text;
    text << value;
    return text.str();
}

std::string Sentence(const Tcp::endpoint& endpoint, const Error& error)
{
    const auto* const row =
        std::find_if(kAdvice.begin(), kAdvice.end(),
                     [&error](const Advice& advice) { return advice.error == error.value(); });
    if (row != kAdvice.end())
        return Text(endpoint) + row->text;
    return Text(endpoint) + " can't be listened on (" + error.message() + "); choose another with --listen";
}

// A program that this process starts gets none of the service's connections.
void CloseOnExec(int socket) { fcntl(socket, F_SETFD, FD_CLOEXEC); }

Tcp::endpoint EndpointOf(const ListenOptions& options)
{
    Error error;
    const auto address = asio::ip::make_address(options.address, error);
    if (error)
        throw SocketException(SocketException::kBindError,
                              "\"" + options.address +
                                  "\" is no numeric IPv4 or IPv6 address; listen on one such as 127.0.0.1");
    return {address, options.port};
}

} // namespace

Listener::Listener(asio::io_context& context, std::function<void(Socket)> accepted)
    : m_acceptor(context), m_timer(context), m_accepted(std::move(accepted))
{
}

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
        throw SocketException(SocketException::kBindError, Sentence(endpoint, failure.code()));
    }
}

void Listener::Open(const Tcp::endpoint& endpoint, const ListenOptions& options)
{
    m_acceptor.open(endpoint.protocol());
    CloseOnExec(m_acceptor.native_handle());
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

void Listener::Accepting(bool wanted)
{
    m_wanted = wanted;
    AcceptNext();
}

void Listener::Close()
{
    Error ignored; // It listens no more, whatever the system says.
    m_acceptor.close(ignored);
    m_timer.cancel();
}

void Listener::AcceptNext()
{
    if (!m_wanted || m_busy || !m_acceptor.is_open())
        return;
    m_busy = true;
    m_acceptor.async_accept([this](const Error& error, Socket socket)
                            { OnAccepted(error, std::move(socket)); });
}

void Listener::OnAccepted(const Error& error, Socket socket)
try
{
    m_busy = false;
    if (!m_acceptor.is_open())
        return; // It may have come in just before.
    if (error)
        return TryLater();
    CloseOnExec(socket.native_handle());
    m_accepted(std::move(socket));
    AcceptNext();
}
catch (const std::exception&)
{
    // No memory for another connection.
    TryLater();
}

void Listener::TryLater()
{
    if (m_busy || !m_acceptor.is_open())
        return;
    m_busy = true;
    m_timer.expires_after(kBetterTime);
    m_timer.async_wait(
        [this](const Error& /*error*/)
        {
            m_busy = false;
            AcceptNext();
        });
}

} // namespace tarno::osa
