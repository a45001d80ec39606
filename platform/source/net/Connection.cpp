#include "net/Connection.h"

#include "net/MemorySocket.h"

#include <utility>

namespace tarno::osa
{
namespace
{

using Error = boost::system::error_code;

} // namespace

Connection::Connection(Stream stream, ConnectionHost& host)
    : m_host(host),
      m_stream(std::move(stream)),
      m_timer(m_stream.Wire().get_executor()),
      m_share(host.Memory())
{
    m_reader.emplace(host.ConnectionLimits().maxRequestBytes);
}

void Connection::Start(std::string_view received)
{
    Within(m_host.ConnectionLimits().requestTime);
    if (received.empty())
        Open();
    else
        Judge(m_reader->Take(received));
}

void Connection::Within(std::chrono::milliseconds time)
{
    m_timer.expires_after(time);
    m_timer.async_wait(
        [self = shared_from_this()](const Error& error)
        {
            // An earlier deadline may have been on its way when this one was set.
            if (!error && self->m_timer.expiry() <= std::chrono::steady_clock::now())
                self->OnDeadline();
        });
}

void Connection::OnDeadline()
{
    if (m_stage == Stage::Reading && m_reader->Started())
        Refuse(Refusal::TooSlow);
    else if (m_stage == Stage::Admitting)
        Refuse(Refusal::Busy);
    else if (m_stage != Stage::Working)
        Close();
}

void Connection::Await(Socket::wait_type event, Step next)
{
    m_stream.Wire().async_wait(event,
                               [self = shared_from_this(), stage = m_stage, next](const Error& error)
                               {
                                   if (!error && self->m_stage == stage)
                                       (self.get()->*next)();
                               });
}

bool Connection::Await(const StreamResult& result, Step next)
{
    if (result.state == StreamState::WaitRead)
        Await(Socket::wait_read, next);
    else if (result.state == StreamState::WaitWrite)
        Await(Socket::wait_write, next);
    else
        return false;
    return true;
}

void Connection::Open()
{
    const StreamResult result = m_stream.Open();
    if (result.state == StreamState::Done)
        return ReadRequest();
    if (result.state == StreamState::NotTls)
    {
        m_stream.GoPlain();
        return Refuse(Refusal::NeedsTls);
    }
    if (!Await(result, &Connection::Open))
        Linger(); // The peer may yet have to read why.
}

void Connection::AwaitRequest()
{
    // What TLS holds already makes nothing happen on the socket; the others get their turn all the same.
    Await(m_stream.Buffered() ? Socket::wait_write : Socket::wait_read, &Connection::ReadRequest);
}

void Connection::ReadRequest()
{
    const std::size_t held = m_reader->Held();
    const std::span<char> scratch = m_host.Scratch();
    // Twice as much, since a string that grows takes more than it needs.
    if (held >= kFreeBytes && !m_share.Ask(2 * (held + scratch.size()), [this] { AwaitRequest(); }))
        return;
    const std::size_t most = held < kFreeBytes ? kFreeBytes - held : scratch.size();
    const StreamResult result = m_stream.Read(scratch.first(most));
    if (Await(result, &Connection::ReadRequest))
        return;
    if (result.state == StreamState::Ended && m_reader->Started())
        Refuse(Refusal::Truncated);
    else if (result.state != StreamState::Done)
        Close();
    else
        Judge(m_reader->Take({scratch.data(), result.count}));
}

void Connection::Judge(RequestReader::Outcome outcome)
{
    if (outcome == RequestReader::Outcome::Complete)
        return Admit();
    if (outcome == RequestReader::Outcome::Refused)
        return Refuse(m_reader->Reason());
    if (m_reader->TakeContinue())
        SendContinue();
    if (m_stage == Stage::Reading)
        AwaitRequest();
}

void Connection::SendContinue()
{
    constexpr std::string_view kText = "HTTP/1.1 100 Continue\r\n\r\n";
    // The first bytes of the answer: they fit into the socket's buffer.
    if (m_stream.Write(kText).count != kText.size())
        Close();
}

} // namespace tarno::osa
