#include "net/Turns.h"

#include <utility>

namespace tarno::osa
{
using analytics::platform::Condition;
using analytics::platform::Hold;

Turns::Turns(std::size_t maxConnections) : m_maxConnections(maxConnections) { m_waiting.reserve(kThreads); }

bool Turns::MayAccept() const
{
    return m_open && !m_pausing && m_accepting < kAccepting && m_connections < m_maxConnections;
}

bool Turns::MayServe() const { return !m_requests.empty() && (m_serving < kServing || m_stopping); }

// One at a time: who comes calls the next one, if there is more to do.
void Turns::Call()
{
    if (m_coming > 0 || m_waiting.empty() || !(m_stopping || MayServe() || (m_accepting == 0 && MayAccept())))
        return;
    ++m_coming;
    m_waiting.back()->Wake();
    m_waiting.pop_back();
}

void Turns::WaitForCall()
{
    Condition called;
    m_waiting.push_back(&called);
    called.Wait(m_lock);
    // It may also have woken by itself.
    if (std::erase(m_waiting, &called) == 0)
        --m_coming;
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
        WaitForCall();
    }
}

Turns::Way Turns::Accepted(bool atOnce)
{
    const Hold hold(m_lock);
    --m_accepting;
    Call();
    if (!m_open)
        return Way::Close;
    // Requests that wait have the next thread that is through, and aren't made more.
    if (!atOnce || m_serving == kServing)
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
    if (m_connections-- == m_maxConnections)
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
    return m_waiting.size();
}

} // namespace tarno::osa
