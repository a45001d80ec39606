// How a server ends: at once, or after what is in progress.

#include "net/ServerLoop.h"

#include <boost/asio/post.hpp>

#include <algorithm>
#include <new>
#include <utility>

namespace tarno::osa
{
using analytics::platform::Hold;
namespace
{

namespace asio = boost::asio;

} // namespace

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
    m_workers->EndAccepting();
    m_listener.End();
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

void ServerLoop::NoteFreed()
{
    if (!m_ending)
        return;
    try
    {
        Post([this] { NoteDrained(); });
    }
    catch (const std::bad_alloc&)
    {
        // Whoever waits for the end waits for all of his time.
    }
}

void ServerLoop::NoteDrained()
{
    if (!m_workers->Idle())
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
                m_listener.Close();
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
