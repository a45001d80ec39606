#include "net/Workers.h"

#include <analytics/Platform.h>
#include <tarno/osa/TcpServer.h>

#include <boost/asio/post.hpp>

#include <cstddef>
#include <utility>

namespace tarno::osa
{
namespace
{

constexpr std::size_t kWorkers = 16;

} // namespace

Workers::Workers(ITcpSocketAccept& acceptor, std::function<void()> returned)
    : m_acceptor(acceptor), m_returned(std::move(returned)), m_threads(kWorkers)
{
}

void Workers::Serve(std::shared_ptr<Exchange> exchange)
{
    ++m_busy;
    boost::asio::post(m_threads, [this, exchange = std::move(exchange)] { Work(exchange); });
}

void Workers::Work(const std::shared_ptr<Exchange>& exchange)
{
    if (!m_stopping)
    {
        const analytics::platform::RequestScope scope;
        m_acceptor.AcceptSocket(new MemorySocket(exchange)); // which owns it from here on
    }
    // The connection ends here even if the acceptor couldn't release its socket.
    exchange->Finish();
    --m_busy;
    m_returned();
}

void Workers::Stop()
{
    m_stopping = true;
    m_threads.join();
}

} // namespace tarno::osa
