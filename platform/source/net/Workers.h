#pragma once

#include "net/MemorySocket.h"

#include <boost/asio/thread_pool.hpp>

#include <atomic>
#include <functional>
#include <memory>

namespace tarno::osa
{

class ITcpSocketAccept;

// The threads that serve whole requests. Their number is fixed: what exceeds it waits.
class Workers
{
  public:
    // `returned` is called on a worker's thread each time that a request was served.
    Workers(ITcpSocketAccept& acceptor, std::function<void()> returned);

    void Serve(std::shared_ptr<Exchange> exchange);
    // Requests that were handed over and whose AcceptSocket has not returned.
    unsigned Busy() const { return m_busy; }
    // Drops what no worker has begun, and returns when nothing runs any more. No Serve() after it.
    void Stop();

  private:
    void Work(const std::shared_ptr<Exchange>& exchange);

    ITcpSocketAccept& m_acceptor;
    const std::function<void()> m_returned;
    std::atomic<bool> m_stopping = false;
    std::atomic<unsigned> m_busy = 0;
    boost::asio::thread_pool m_threads;
};

} // namespace tarno::osa
