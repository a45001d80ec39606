// Who may make a request, and what the others are told.

#include "net/Connection.h"

#include "net/MemorySocket.h"

#include <boost/asio/post.hpp>

#include <utility>

namespace tarno::osa
{
namespace
{

namespace asio = boost::asio;

Refusal RefusalOf(PasswordGate::Verdict verdict)
{
    if (verdict == PasswordGate::Verdict::TooManyAttempts)
        return Refusal::TooManyAttempts;
    return verdict == PasswordGate::Verdict::Busy ? Refusal::Busy : Refusal::Unauthorized;
}

} // namespace

void Connection::Refuse(Refusal reason)
{
    const auto version = m_stage == Stage::Admitting ? m_reader->Version() : SoapVersion::Soap11;
    m_share.Release();
    m_reader.reset();
    Send(RefusalResponse(reason, m_host.ConnectionLimits(), version));
}

void Connection::Admit()
{
    PasswordGate* const passwords = m_host.Passwords();
    if (passwords == nullptr)
        return Work();
    m_stage = Stage::Admitting;
    Within(m_host.ConnectionLimits().requestTime);
    // The verdict comes on another thread, where nothing may hold this connection.
    auto decided =
        [weak = weak_from_this(), loop = m_stream.Wire().get_executor()](PasswordGate::Verdict verdict)
    {
        asio::post(loop,
                   [weak, verdict]
                   {
                       const auto self = weak.lock();
                       if (self != nullptr && self->m_stage == Stage::Admitting)
                           self->OnVerdict(verdict);
                   });
    };
    const auto verdict = passwords->Check(m_reader->Authorization(), m_stream.Peer(), std::move(decided));
    if (verdict)
        OnVerdict(*verdict);
}

void Connection::OnVerdict(PasswordGate::Verdict verdict)
{
    if (verdict == PasswordGate::Verdict::Allowed)
        Work();
    else
        Refuse(RefusalOf(verdict));
}

} // namespace tarno::osa
