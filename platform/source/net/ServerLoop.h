#pragma once

#include "access/TlsSource.h"
#include "net/Budget.h"
#include "net/Connection.h"
#include "net/DirectConnection.h"
#include "net/Limits.h"
#include "net/Listener.h"
#include "net/PasswordGate.h"
#include "net/Workers.h"
#include "threads/Lock.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

namespace tarno::osa
{

class ITcpSocketAccept;

// Who gets to the service, and how. What is null asks nothing of its clients.
struct Access
{
    std::unique_ptr<TlsSource> tls;
    std::unique_ptr<PasswordGate> passwords;
};

// One server: a fixed number of workers that accept connections and serve whole requests, and a thread
// that reads, times and sends for all connections that have to be waited for, or asked for a password.
// Public operations may be called from any thread but a worker.
class ServerLoop final : private ConnectionHost, private DirectHost
{
  public:
    ServerLoop(ITcpSocketAccept& acceptor, const Limits& limits, Access access = {});
    ~ServerLoop(); // stops
    ServerLoop(const ServerLoop&) = delete;
    ServerLoop& operator=(const ServerLoop&) = delete;

    // Once. Listens and serves from then on; returns the URL. Throws SocketException.
    std::string Start(const ListenOptions& options);
    bool Listening() const { return m_listening; }
    // See analytics::platform::DrainServer.
    bool Drain(std::chrono::milliseconds limit);
    // See TcpServer::Stop.
    void Stop();

  private:
    const Limits& ConnectionLimits() const override { return m_limits; }
    Budget& Memory() override { return m_memory; }
    std::span<char> Scratch() override { return m_scratch; }
    bool Ending() const override { return m_ending; }
    PasswordGate* Passwords() override { return m_access.passwords.get(); }
    void Serve(std::shared_ptr<Exchange> exchange) override;
    void Ended(Connection& connection) override;
    void Adopt(std::shared_ptr<DirectConnection> connection) override;
    void DirectEnded() override;
    void Served() override;

    bool Post(std::function<void()> task); // false once the loop has ended
    void StartThreads();
    void RunLoop();
    void Take(DirectConnection& arrived);
    std::shared_ptr<Connection> Add(int socket);
    void StopAccepting();
    void NoteFreed();
    void NoteDrained();
    void EndThreads();
    std::vector<std::shared_ptr<Connection>> Connections() const; // those of this moment

    ITcpSocketAccept& m_acceptor;
    const Limits m_limits;
    std::atomic<bool> m_listening = false;
    std::atomic<bool> m_ending = false; // no new connections, no waiting for clients
    std::once_flag m_stopped;
    Listener m_listener;

    analytics::platform::Lock m_lock;
    bool m_ended ANALYTICS_GUARDED_BY(m_lock) = false;

    // Everything below belongs to the loop's thread.
    Budget m_memory;
    boost::asio::io_context m_io{1};
    const Access m_access; // goes first: its answers are on their way to the loop
    std::optional<boost::asio::executor_work_guard<boost::asio::io_context::executor_type>> m_keepRunning;
    std::array<char, 64 * 1024> m_scratch = {};
    std::unordered_map<Connection*, std::shared_ptr<Connection>> m_connections;
    std::vector<std::shared_ptr<std::promise<void>>> m_drains;

    std::optional<Workers> m_workers;
    std::thread m_thread;
};

} // namespace tarno::osa
