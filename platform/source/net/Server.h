#pragma once

#include "net/Connection.h"
#include "net/ServerSettings.h"
#include "threads/Mutex.h"
#include "threads/Ticker.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace tarno::osa
{

class ITcpSocketAccept;

// As many of `wanted` connections as the process may have files open now, less those that the rest
// of it needs; at least one.
std::size_t ConnectionsAllowed(std::size_t wanted);

// Throws SocketException with a sentence for the operator if the address can't be used.
void CheckAddress(const ListenOptions& options);

// One server: a thread of its pool accepts a connection and takes it as far as its bytes carry it: handshake,
// request, password, answer. What has to wait for something goes on when that has come, on any of the
// threads. Public operations may be called from any thread but those.
class Server
{
  public:
    // The longest that nothing is accepted after a failure to accept: as a rule some connection ends within
    // this time.
    static constexpr std::chrono::milliseconds kAcceptBackoff{100};

    // `forOperators`: it serves GET, and isn't counted in the metrics. Throws std::system_error.
    Server(ITcpSocketAccept& acceptor, const Limits& limits, Access access = {}, bool forOperators = false);
    ~Server(); // stops
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // Once. Listens and serves from then on; returns the URL. Throws SocketException (kBindError) with a
    // sentence for the operator.
    std::string Start(const ListenOptions& options);
    bool Listening() const { return m_listening; }
    // See analytics::platform::DrainServer.
    bool Drain(std::chrono::milliseconds limit);
    // See TcpServer::Stop.
    void Stop();
    // Reads again what clients are let in by.
    void RenewAccess();

    // How many connections wait for something, and how many requests for a thread.
    std::size_t Waiting() { return m_served.pool.Waiting(); }
    std::size_t WaitingRequests() { return m_served.pool.WaitingForSlot(); }

  private:
    class Listener;

    bool Count(); // false: that is as many as are allowed
    void Ended();
    void Closed();
    void AcceptAgain();
    void StopAccepting();

    const std::size_t m_maxConnections;
    std::atomic<bool> m_listening = false;
    std::once_flag m_stopped;
    const std::shared_ptr<Listener> m_listener;

    analytics::platform::Mutex m_lock;
    analytics::platform::CondVar m_idle;
    std::size_t m_connections ANALYTICS_GUARDED_BY(m_lock) = 0;
    bool m_accepting ANALYTICS_GUARDED_BY(m_lock) = false; // a connection may come that isn't counted yet
    bool m_paused ANALYTICS_GUARDED_BY(m_lock) = false;    // until a connection ends

    Served m_served;                                       // goes before all that its connections use
    std::optional<analytics::platform::Ticker> m_warnings; // of certificates
};

} // namespace tarno::osa
