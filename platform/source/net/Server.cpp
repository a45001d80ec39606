#include "net/Server.h"

#include "audit/AuditTrail.h"
#include "metrics/Metrics.h"

#include <tarno/osa/SocketException.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

namespace tarno::osa
{
using analytics::platform::Counter;
using analytics::platform::MutexLock;
namespace
{

// Room for a fair number of the largest requests, and more if they are small.
std::size_t MemoryFor(const Limits& limits)
{
    return std::max<std::size_t>(67'108'864, 16 * limits.maxRequestBytes);
}

Counter Refusals(const char* reason)
{
    return Counter("varlo_access_refused_total", "Requests that were refused for who sent them.",
                   std::string("reason=\"") + reason + '"');
}
std::array<Counter, 3> gRefused = {Refusals("password"), Refusals("throttled"), Refusals("certificate")};

constexpr std::array kReasons = {"no user with this password", "too many wrong passwords from this address",
                                 "no valid client certificate"};

void NoteRefused(Refused why, const analytics::platform::Caller& caller)
{
    gRefused[static_cast<std::size_t>(why)].Add();
    analytics::platform::AuditRefusedAccess(caller, kReasons[static_cast<std::size_t>(why)]);
}

constexpr std::chrono::minutes kWarningInterval(1); // to look whether there is something to warn of

// Nothing is wanting: the next connection can be accepted at once.
bool IsPassing(int error) { return error == EINTR || error == ECONNABORTED || error == EAGAIN; }

} // namespace

// Accepts one connection after the other, on whichever thread gets there first. That thread goes on with the
// connection, and the next one accepts.
class Server::Acceptor final : public EventHandler
{
  public:
    explicit Acceptor(Server& server) : m_server(server), m_descriptor(server.m_listener.Descriptor()) {}

    Wish Continue(Cause cause) override
    {
        if (cause == Cause::Ending)
        {
            m_server.m_listener.Close();
            return Wish::Nothing;
        }
        m_deadline = Clock::time_point::max();
        int reason = ENOMEM;
        std::shared_ptr<Connection> connection;
        try
        {
            connection = Accept(reason);
        }
        catch (const std::bad_alloc&)
        {
            // One reason more to wait for a better time.
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
    std::shared_ptr<Connection> Accept(int& reason)
    {
        Accepted accepted = m_server.m_listener.Accept();
        reason = errno;
        return accepted.socket ? std::make_shared<Connection>(std::move(accepted), m_server.m_served)
                               : nullptr;
    }
    Wish GoOn(std::shared_ptr<Connection> connection)
    {
        const auto self = std::static_pointer_cast<Acceptor>(shared_from_this());
        LeaderFollowers& pool = m_server.m_served.pool;
        if (m_server.Count(self))
            pool.Wait(self, Wish::Read); // another thread may be here from now on
        pool.Do(std::move(connection), Cause::Ready);
        return Wish::Nothing;
    }

    Server& m_server;
    const int m_descriptor;
};

Server::Server(ITcpSocketAccept& acceptor, const Limits& limits, Access access, bool forOperators)
    : m_maxConnections(ConnectionsAllowed(limits.maxConnections)),
      m_served{.acceptor = acceptor,
               .limits = limits,
               .access = std::move(access),
               .counted = !forOperators,
               .postOnly = !forOperators,
               .memory = Budget(MemoryFor(limits)),
               .ending = false,
               .ended = [this] { Ended(); },
               .refused = NoteRefused,
               .pool = LeaderFollowers(limits.workers)}
{
}

Server::~Server() { Stop(); }

std::string Server::Start(const ListenOptions& options)
{
    std::string url = m_listener.Listen(options);
    try
    {
        m_served.pool.Start();
    }
    catch (const std::system_error& failure)
    {
        m_served.pool.Stop();
        m_listener.Close();
        throw SocketException(SocketException::kError,
                              std::string("The server's threads can't be started (") + failure.what() +
                                  "); allow the process more threads");
    }
    m_listening = true;
    if (m_served.access.tls != nullptr)
    {
        const auto warn = [this] { m_served.access.tls->Warn(std::chrono::system_clock::now()); };
        warn();
        m_warnings.emplace(kWarningInterval, warn);
    }
    m_served.pool.Wait(std::make_shared<Acceptor>(*this), EventHandler::Wish::Read);
    return url;
}

bool Server::Count(const std::shared_ptr<Acceptor>& acceptor)
{
    const MutexLock hold(m_lock);
    if (++m_connections < m_maxConnections)
        return true;
    m_paused = acceptor;
    return false;
}

void Server::Ended()
{
    std::shared_ptr<Acceptor> goesOn;
    {
        const MutexLock hold(m_lock);
        goesOn = std::exchange(m_paused, nullptr);
        if (--m_connections == 0)
            m_idle.Wake();
    }
    if (goesOn != nullptr)
        m_served.pool.Wait(std::move(goesOn), EventHandler::Wish::Read);
}

void Server::StopAccepting()
{
    m_served.ending = true;
    m_listening = false;
    m_served.pool.End();
    std::shared_ptr<Acceptor> ends;
    {
        const MutexLock hold(m_lock);
        ends = std::exchange(m_paused, nullptr);
    }
    if (ends != nullptr)
        m_served.pool.Wait(std::move(ends), EventHandler::Wish::Read);
}

bool Server::Drain(std::chrono::milliseconds limit)
{
    StopAccepting();
    // Longer than any host waits, and short enough to be added to the time of day.
    const auto until =
        EventHandler::Clock::now() + std::min<std::chrono::milliseconds>(limit, std::chrono::hours(24));
    const MutexLock hold(m_lock);
    while (m_connections > 0)
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
                       m_listener.Close();
                   });
}

} // namespace tarno::osa
