#include "net/Server.h"

#include <tarno/osa/TcpSocket.h>

#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <sstream>
#include <system_error>
#include <utility>

namespace tarno::osa
{
using analytics::platform::FileHandle;
using analytics::platform::MutexLock;
namespace
{

namespace asio = boost::asio;
using Error = boost::system::error_code;
using Tcp = asio::ip::tcp;

// Listening socket, event queue, profile store, plug-in files, the host's own.
constexpr std::size_t kFilesForTheRest = 64;
constexpr std::chrono::minutes kWarningInterval(1); // to look whether there is something to warn of

// Room for a fair number of the largest requests, and more if they are small.
std::size_t MemoryFor(const Limits& limits)
{
    return std::max<std::size_t>(67'108'864, 16 * limits.maxRequestBytes);
}

// Nothing is wanting: the next connection can be accepted at once.
bool IsPassing(int error) { return error == EINTR || error == ECONNABORTED || error == EAGAIN; }

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
    Advice{EADDRNOTAVAIL, " isn't an address of this machine; choose one that it has with "},
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
                "\" isn't a numeric IPv4 or IPv6 address; choose one such as 127.0.0.1 with " +
                options.settledBy);
    return {address, options.port};
}

} // namespace

std::size_t ConnectionsAllowed(std::size_t wanted)
{
    rlimit files = {};
    if (getrlimit(RLIMIT_NOFILE, &files) != 0 || files.rlim_cur == RLIM_INFINITY)
        return wanted;
    const auto all = static_cast<std::size_t>(files.rlim_cur);
    return std::min(wanted, all > kFilesForTheRest ? all - kFilesForTheRest : 1);
}

void CheckAddress(const ListenOptions& options) { EndpointOf(options); }

// The listening socket. It accepts one connection after the other, on whichever thread gets there first. That
// thread goes on with the connection, and the next one accepts.
class Server::Listener final : public EventHandler
{
  public:
    explicit Listener(Server& server) : m_server(server) {}

    std::string Listen(const ListenOptions& options)
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
    // The port is free from then on.
    void Close()
    {
        Error ignored; // It listens no more, whatever the system says.
        m_acceptor.close(ignored);
        m_descriptor = -1;
        m_server.Closed();
    }
    Wish Continue(Cause cause) override
    {
        if (cause == Cause::Ending)
        {
            Close();
            return Wish::Nothing;
        }
        m_deadline = Clock::time_point::max();
        int reason = ENOMEM; // One reason more to wait for a better time.
        std::shared_ptr<Connection> connection;
        try
        {
            connection = Accept(reason);
        }
        catch (const std::bad_alloc&)
        {
        }
        if (connection != nullptr)
            return GoOn(std::move(connection));
        if (IsPassing(reason))
            return Wish::Read;
        m_deadline = Clock::now() + kAcceptBackoff;
        return Wish::WakeUp;
    }
    int Descriptor() const override { return m_descriptor; }

  private:
    void Open(const Tcp::endpoint& endpoint, const ListenOptions& options)
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
        m_descriptor = m_acceptor.native_handle();
    }
    std::shared_ptr<Connection> Accept(int& reason)
    {
        Tcp::endpoint peer; // unspecified if it isn't an IP address
        socklen_t size = static_cast<socklen_t>(peer.capacity());
        FileHandle socket(accept4(m_descriptor, peer.data(), &size, SOCK_CLOEXEC | SOCK_NONBLOCK));
        reason = errno;
        return socket ? std::make_shared<Connection>(std::move(socket), peer.address(), m_server.m_served)
                      : nullptr;
    }
    Wish GoOn(std::shared_ptr<Connection> connection)
    {
        if (m_server.Count())
            m_server.AcceptAgain(); // another thread may be here from now on
        m_server.m_served.pool.Do(std::move(connection), Cause::Ready);
        return Wish::Nothing;
    }

    Server& m_server;
    asio::io_context m_context; // which nothing runs in
    Tcp::acceptor m_acceptor{m_context};
    int m_descriptor = -1;
};

Server::Server(ITcpSocketAccept& acceptor, const Limits& limits, Access access, bool forOperators)
    : m_maxConnections(ConnectionsAllowed(limits.maxConnections)),
      m_listener(std::make_shared<Listener>(*this)),
      m_served{.acceptor = acceptor,
               .limits = limits,
               .access = std::move(access),
               .counted = !forOperators,
               .postOnly = !forOperators,
               .memory = Budget(MemoryFor(limits)),
               .ending = false,
               .ended = [this] { Ended(); },
               .pool = LeaderFollowers(limits.workers)}
{
}

Server::~Server() { Stop(); }

std::string Server::Start(const ListenOptions& options)
{
    std::string url = m_listener->Listen(options);
    try
    {
        m_served.pool.Start();
    }
    catch (const std::system_error& failure)
    {
        m_served.pool.Stop();
        m_listener->Close();
        throw SocketException(SocketException::kError,
                              std::string("The server's threads can't be started (") + failure.what() +
                                  "); allow the process more threads");
    }
    m_listening = true;
    {
        const MutexLock hold(m_lock);
        m_accepting = true;
    }
    if (m_served.access.tls != nullptr)
    {
        const auto warn = [this] { m_served.access.tls->Warn(std::chrono::system_clock::now()); };
        warn();
        m_warnings.emplace(kWarningInterval, warn);
    }
    AcceptAgain();
    return url;
}

bool Server::Count()
{
    const MutexLock hold(m_lock);
    m_paused = ++m_connections >= m_maxConnections;
    return !m_paused;
}

void Server::Ended()
{
    bool goesOn = false;
    {
        const MutexLock hold(m_lock);
        goesOn = std::exchange(m_paused, false);
        if (--m_connections == 0)
            m_idle.Wake();
    }
    if (goesOn)
        AcceptAgain();
}

void Server::Closed()
{
    const MutexLock hold(m_lock);
    m_accepting = false;
    m_idle.Wake();
}

void Server::AcceptAgain() { m_served.pool.Wait(m_listener, EventHandler::Wish::Read); }

void Server::StopAccepting()
{
    m_served.ending = true;
    m_listening = false;
    m_served.pool.End();
    const auto wasPaused = [this]
    {
        const MutexLock hold(m_lock);
        return std::exchange(m_paused, false);
    };
    if (wasPaused())
        AcceptAgain(); // for the last time
}

bool Server::Drain(std::chrono::milliseconds limit)
{
    StopAccepting();
    // Longer than any host waits, and short enough to be added to the time of day.
    const auto until =
        EventHandler::Clock::now() + std::min<std::chrono::milliseconds>(limit, std::chrono::hours(24));
    const MutexLock hold(m_lock);
    while (m_accepting || m_connections > 0)
    {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(until - EventHandler::Clock::now());
        if (left.count() <= 0)
            return false;
        m_idle.WaitFor(m_lock, left);
    }
    m_idle.Wake(); // whoever else waits
    return true;
}

void Server::RenewAccess()
{
    if (m_served.access.tls != nullptr)
        m_served.access.tls->Current();
    if (m_served.access.passwords != nullptr)
        m_served.access.passwords->Renew();
}

void Server::Stop()
{
    std::call_once(m_stopped,
                   [this]
                   {
                       m_warnings.reset();
                       StopAccepting();
                       if (m_served.access.passwords != nullptr)
                           m_served.access.passwords->Stop();
                       m_served.pool.Stop();
                       m_listener->Close();
                   });
}

} // namespace tarno::osa
