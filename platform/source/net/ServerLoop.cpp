#include "net/ServerLoop.h"

#include <tarno/osa/SocketException.h>

#include <boost/asio/post.hpp>

#include <algorithm>
#include <system_error>
#include <utility>

namespace tarno::osa
{
using analytics::platform::FileHandle;
using analytics::platform::Hold;
namespace
{

namespace asio = boost::asio;

// Room for a fair number of the largest requests, and more if they are small.
std::size_t MemoryFor(const Limits& limits)
{
    return std::max<std::size_t>(67'108'864, 16 * limits.maxRequestBytes);
}

Limits Allowed(Limits limits)
{
    limits.maxConnections = ConnectionsAllowed(limits.maxConnections);
    return limits;
}

} // namespace

ServerLoop::ServerLoop(ITcpSocketAccept& acceptor, const Limits& limits, Access access)
    : m_acceptor(acceptor),
      m_limits(Allowed(limits)),
      m_memory(MemoryFor(limits)),
      m_access(std::move(access))
{
}

ServerLoop::~ServerLoop() { Stop(); }

std::string ServerLoop::Start(const ListenOptions& options)
{
    std::string url = m_listener.Listen(options);
    try
    {
        StartThreads();
    }
    catch (const std::system_error& failure)
    {
        m_listener.Close();
        throw SocketException(SocketException::kError,
                              std::string("The server's threads can't be started (") + failure.what() +
                                  "); allow the process more threads");
    }
    m_listening = true;
    m_workers->BeginAccepting();
    return url;
}

void ServerLoop::StartThreads()
{
    m_keepRunning.emplace(m_io.get_executor());
    DirectHost& host = *this;
    const bool atOnce = m_access.tls == nullptr && m_access.passwords == nullptr;
    m_workers.emplace(
        Workers::Work{m_acceptor, m_listener, m_limits.maxConnections, m_limits.maxRequestBytes, atOnce},
        host);
    m_thread = std::thread([this] { RunLoop(); });
}

void ServerLoop::RunLoop()
{
    for (;;)
    {
        try
        {
            m_io.run();
            return;
        }
        catch (const std::exception&)
        {
            // Memory ran short in one connection's step; its deadline closes it, the others go on.
        }
    }
}

bool ServerLoop::Post(std::function<void()> task)
{
    const Hold hold(m_lock);
    if (!m_ended)
        asio::post(m_io, std::move(task));
    return !m_ended;
}

void ServerLoop::Adopt(std::shared_ptr<DirectConnection> connection)
{
    Post([this, connection = std::move(connection)] { Take(*connection); });
}

void ServerLoop::Take(DirectConnection& arrived)
{
    if (m_ending && !arrived.answered)
        return; // It came in just before.
    const auto connection = Add(arrived.Release());
    if (arrived.answered)
        connection->Send(std::move(arrived.answer));
    else
        connection->Start(arrived.received);
}

std::shared_ptr<Connection> ServerLoop::Add(int descriptor)
try
{
    FileHandle owned(descriptor);
    Connection::Socket socket(m_io);
    socket.assign(m_listener.ConnectionProtocol(), owned.Get());
    owned.Release();
    const auto tls = m_access.tls == nullptr ? nullptr : m_access.tls->Current();
    ConnectionHost& host = *this;
    auto connection = std::make_shared<Connection>(Stream(std::move(socket), tls), host);
    m_connections.emplace(connection.get(), connection);
    return connection;
}
catch (const std::exception&)
{
    m_workers->ConnectionEnded();
    throw;
}

void ServerLoop::Ended(Connection& connection)
{
    m_connections.erase(&connection);
    m_workers->ConnectionEnded();
    NoteDrained();
}

void ServerLoop::DirectEnded()
{
    m_workers->ConnectionEnded();
    NoteFreed();
}

void ServerLoop::Served() { NoteFreed(); }

void ServerLoop::Serve(std::shared_ptr<Exchange> exchange) { m_workers->Add(std::move(exchange)); }

} // namespace tarno::osa
