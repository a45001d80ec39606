#pragma once

#include "net/MemorySocket.h"
#include "net/Turns.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace tarno::osa
{

class DirectConnection;
class DirectHost;
class ITcpSocketAccept;
class Listener;

// The threads that accept connections and serve whole requests. Their number is fixed: what exceeds it
// waits. None of them ever waits for a peer.
class Workers
{
  public:
    struct Work
    {
        ITcpSocketAccept& acceptor;
        Listener& listener; // already listening when BeginAccepting() is called
        std::size_t maxConnections;
        std::size_t maxRequestBytes;
        bool atOnce; // requests may be served where they are read
    };

    // `host` gets the connections that aren't for these threads, and is told when one has ended or a
    // request was served. Throws std::system_error if there are no threads.
    Workers(const Work& work, DirectHost& host);
    ~Workers(); // stops

    void BeginAccepting() { m_turns.BeginAccepting(); }
    void EndAccepting() { m_turns.EndAccepting(); }
    // A whole request that waits for a thread. Not after Stop().
    void Add(std::shared_ptr<Exchange> exchange) { m_turns.Add(std::move(exchange)); }
    // A connection that the loop adopted, or couldn't.
    void ConnectionEnded() { m_turns.ConnectionEnded(); }
    // No connection is open, and no AcceptSocket runs.
    bool Idle() { return m_turns.Idle(); }
    // After EndAccepting() and the listener's End(). Drops what no worker has begun, and returns when nothing
    // runs any more.
    void Stop();

  private:
    class Serving;

    void Run();
    void Accept();
    std::shared_ptr<DirectConnection> NextConnection(); // null if none came
    void ServeAtOnce(std::shared_ptr<DirectConnection> connection);
    void ServeWaiting(const std::shared_ptr<Exchange>& exchange);
    void Serve(const std::shared_ptr<Exchange>& exchange);

    const Work m_work;
    DirectHost& m_host;
    Turns m_turns;
    std::atomic<bool> m_stopping = false;
    std::vector<std::thread> m_threads;
};

} // namespace tarno::osa
