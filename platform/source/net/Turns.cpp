#include "net/Turns.h"

#include <utility>

namespace tarno::osa
{
using analytics::platform::Hold;

bool Turns::MayAccept() const
{
    return m_open && !m_pausing && m_accepting < kAccepting && m_connections < m_maxConnections;
}

bool Turns::MayServe() const { return !m_requests.empty() && (m_serving < kServing || m_stopping); }

void Turns::Call()
{
    if (m_waiting > 0 && (m_stopping || MayServe() || (m_accepting == 0 && MayAccept())))
        m_called.Wake();
}

Turns::Task Turns::Next(std::shared_ptr<Exchange>& exchange)
{
    const Hold hold(m_lock);
    for (;;)
    {
        if (MayServe())
        {
            exchange = std::move(m_requests.front());
            m_requests.pop_front();
            ++m_serving;
            Call(); // somebody else for what is left
            return Task::Serve;
        }
        if (m_stopping)
        {
            Call();
            return Task::End;
        }
        if (MayAccept())
        {
            ++m_accepting;
            ++m_connections;
            return Task::Accept;
        }
        ++m_waiting;
        m_called.Wait(m_lock);
        --m_waiting;
    }
}

Turns::Way Turns::Accepted(bool atOnce)
{
    const Hold hold(m_lock);
    --m_accepting;
    Call();
    if (!m_open)
        return Way::Close;
    // Requests that wait already come first.
    if (!atOnce || m_serving == kServing || !m_requests.empty())
        return Way::Loop;
    ++m_serving;
    return Way::AtOnce;
}

void Turns::NotAccepted(bool failed)
{
    const Hold hold(m_lock);
    if (failed && m_open && !std::exchange(m_pausing, true))
    {
        m_betterTime.WaitFor(m_lock, kBetterTime);
        m_pausing = false;
    }
    --m_accepting;
    --m_connections;
}

void Turns::ConnectionEnded()
{
    const Hold hold(m_lock);
    --m_connections;
    Call();
}

void Turns::Served()
{
    const Hold hold(m_lock);
    --m_serving;
}

void Turns::BeginAccepting()
{
    const Hold hold(m_lock);
    m_open = true;
    Call();
}

void Turns::EndAccepting()
{
    const Hold hold(m_lock);
    m_open = false;
    m_betterTime.Wake();
}

void Turns::Add(std::shared_ptr<Exchange> exchange)
{
    const Hold hold(m_lock);
    m_requests.push_back(std::move(exchange));
    Call();
}

void Turns::Stop()
{
    const Hold hold(m_lock);
    m_stopping = true;
    Call();
}

bool Turns::Idle()
{
    const Hold hold(m_lock);
    return m_connections == m_accepting && m_serving == 0 && m_requests.empty();
}

std::size_t Turns::Waiting()
{
    const Hold hold(m_lock);
    return m_waiting;
}

} // namespace tarno::osa
