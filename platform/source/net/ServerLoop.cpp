#include "net/ServerLoop.h"

#include <tarno/osa/SocketException.h>

#include <boost/asio/post.hpp>

#include <algorithm>
#include <system_error>
#include <utility>

namespace tarno::osa
{
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
      m_access(std::move(access)),
      m_listener(m_io, [this](Connection::Socket socket) { Adopt(std::move(socket)); })
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
    Post([this] { m_listener.Accepting(true); });
    return url;
}

void ServerLoop::StartThreads()
{
    m_keepRunning.emplace(m_io.get_executor());
    m_workers.emplace(m_acceptor,
                      [this]
                      {
                          if (m_ending)
                              Post([this] { NoteDrained(); });
                      });
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

void ServerLoop::Adopt(Connection::Socket socket)
{
    ConnectionHost& host = *this;
    const auto tls = m_access.tls == nullptr ? nullptr : m_access.tls->Current();
    const auto connection = std::make_shared<Connection>(Stream(std::move(socket), tls), host);
    m_connections.emplace(connection.get(), connection);
    m_listener.Accepting(m_connections.size() < m_limits.maxConnections);
    connection->Start();
}

void ServerLoop::Ended(Connection& connection)
{
    m_connections.erase(&connection);
    m_listener.Accepting(m_connections.size() < m_limits.maxConnections);
    NoteDrained();
}

void ServerLoop::Serve(std::shared_ptr<Exchange> exchange) { m_workers->Serve(std::move(exchange)); }

std::vector<std::shared_ptr<Connection>> ServerLoop::Connections() const
{
    std::vector<std::shared_ptr<Connection>> all;
    for (const auto& [key, connection] : m_connections)
        all.push_back(connection);
    return all;
}

void ServerLoop::StopAccepting()
{
    m_ending = true;
    m_listening = false;
    m_listener.Close();
    for (const auto& connection : Connections())
        connection->GiveUp();
}

bool ServerLoop::Drain(std::chrono::milliseconds limit)
{
    const auto drained = std::make_shared<std::promise<void>>();
    auto done = drained->get_future();
    const bool running = Post(
        [this, drained]
        {
            m_drains.push_back(drained);
            StopAccepting();
            NoteDrained();
        });
    // Longer than any host waits, and short enough to be added to the time of day.
    const std::chrono::milliseconds wait = std::min<std::chrono::milliseconds>(limit, std::chrono::hours(24));
    return !running || done.wait_for(wait) == std::future_status::ready;
}

void ServerLoop::NoteDrained()
{
    if (!m_connections.empty() || m_workers->Busy() > 0)
        return;
    for (const auto& drain : std::exchange(m_drains, {}))
        drain->set_value();
}

void ServerLoop::Stop()
{
    std::call_once(m_stopped, [this] { EndThreads(); });
}

void ServerLoop::EndThreads()
{
    if (m_thread.joinable())
    {
        // From then on no connection hands over a request, which the workers couldn't take any more.
        const auto closed = std::make_shared<std::promise<void>>();
        Post(
            [this, closed]
            {
                StopAccepting();
                closed->set_value();
            });
        closed->get_future().wait();
        if (m_access.passwords != nullptr)
            m_access.passwords->Stop();
        m_workers->Stop();
        // What the workers left was posted before this, so every answer has begun to go out.
        Post(
            [this]
            {
                for (const auto& connection : Connections())
                    connection->Close();
                m_keepRunning.reset();
            });
        m_thread.join();
    }
    {
        const Hold hold(m_lock);
        m_ended = true;
    }
    // Whoever asked for something meanwhile gets an answer.
    m_io.restart();
    m_io.poll();
}

} // namespace tarno::osa
