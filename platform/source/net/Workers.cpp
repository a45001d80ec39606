#include "net/Workers.h"

#include "net/DirectConnection.h"
#include "net/Listener.h"

#include <analytics/Platform.h>
#include <tarno/osa/TcpServer.h>

#include <cerrno>
#include <exception>
#include <new>
#include <string>
#include <utility>

namespace tarno::osa
{
namespace
{

// Nothing is wanting: the next connection can be accepted at once.
bool IsPassing(int error) { return error == EINTR || error == ECONNABORTED || error == EAGAIN; }

} // namespace

// One of the requests that are served at a time.
class Workers::Serving
{
  public:
    explicit Serving(Workers& workers) : m_workers(workers) {}
    ~Serving()
    {
        m_workers.m_turns.Served();
        m_workers.m_host.Served();
    }
    Serving(const Serving&) = delete;
    Serving& operator=(const Serving&) = delete;

  private:
    Workers& m_workers;
};

Workers::Workers(const Work& work, DirectHost& host)
    : m_work(work), m_host(host), m_turns(work.maxConnections)
{
    try
    {
        while (m_threads.size() < Turns::kThreads)
            m_threads.emplace_back([this] { Run(); });
    }
    catch (...)
    {
        Stop();
        throw;
    }
}

Workers::~Workers() { Stop(); }

void Workers::Run()
{
    for (;;)
    {
        std::shared_ptr<Exchange> exchange;
        const Turns::Task task = m_turns.Next(exchange);
        if (task == Turns::Task::End)
            return;
        try
        {
            if (task == Turns::Task::Accept)
                Accept();
            else
                ServeWaiting(exchange);
        }
        catch (const std::exception&)
        {
            // Memory ran short: the connection is closed, the others go on.
        }
    }
}

void Workers::Accept()
{
    auto connection = NextConnection();
    if (connection == nullptr)
        return;
    const Turns::Way way = m_turns.Accepted(m_work.atOnce);
    if (way == Turns::Way::AtOnce)
        ServeAtOnce(std::move(connection));
    else if (way == Turns::Way::Loop)
        m_host.Adopt(connection);
}

std::shared_ptr<DirectConnection> Workers::NextConnection()
{
    int reason = ENOMEM;
    try
    {
        auto connection = std::make_shared<DirectConnection>(m_host);
        if (connection->Accept(m_work.listener))
            return connection;
        reason = errno;
    }
    catch (const std::bad_alloc&)
    {
        // One reason more to wait for a better time.
    }
    m_turns.NotAccepted(!IsPassing(reason));
    return nullptr;
}

void Workers::ServeAtOnce(std::shared_ptr<DirectConnection> connection)
{
    const Serving serving(*this);
    auto request = connection->Receive(m_work.maxRequestBytes);
    if (!request)
        return;
    const DirectConnection* const peer = connection.get();
    // The last reference goes with the answer, so that the client has its end before the thread is through.
    auto finished = [connection = std::move(connection)](std::string answer)
    { connection->Answer(std::move(answer)); };
    Serve(std::make_shared<Exchange>(std::move(*request), std::move(finished),
                                     [peer] { return peer->PeerGone(); }));
}

void Workers::ServeWaiting(const std::shared_ptr<Exchange>& exchange)
{
    const Serving serving(*this);
    Serve(exchange);
}

void Workers::Serve(const std::shared_ptr<Exchange>& exchange)
{
    try
    {
        if (!m_stopping)
        {
            const analytics::platform::RequestScope scope;
            m_work.acceptor.AcceptSocket(new MemorySocket(exchange)); // which owns it from here on
        }
    }
    catch (const std::exception&)
    {
        // No memory for a socket: the connection ends without an answer.
    }
    // The connection ends here even if the acceptor couldn't release its socket.
    exchange->Finish();
}

void Workers::Stop()
{
    m_stopping = true;
    m_turns.Stop();
    for (std::thread& thread : m_threads)
        if (thread.joinable())
            thread.join();
}

} // namespace tarno::osa
