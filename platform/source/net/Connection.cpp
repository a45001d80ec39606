#include "net/Connection.h"

#include "net/MemorySocket.h"

#include <boost/asio/post.hpp>

#include <poll.h>

#include <algorithm>
#include <utility>

namespace tarno::osa
{
namespace
{

namespace asio = boost::asio;
using Error = boost::system::error_code;

// What every connection may hold without asking; nearly every request fits.
constexpr std::size_t kFreeBytes = 16'384;

// A client that still sends when it is answered gets the answer only if it isn't cut off meanwhile.
// For this long and this much its bytes are read and dropped.
constexpr std::chrono::seconds kLingerTime(3);
constexpr std::size_t kLingerBytes = 67'108'864;

Refusal RefusalOf(PasswordGate::Verdict verdict)
{
    if (verdict == PasswordGate::Verdict::TooManyAttempts)
        return Refusal::TooManyAttempts;
    return verdict == PasswordGate::Verdict::Busy ? Refusal::Busy : Refusal::Unauthorized;
}

} // namespace

Connection::Connection(Stream stream, ConnectionHost& host)
    : m_host(host),
      m_stream(std::move(stream)),
      m_timer(m_stream.Wire().get_executor()),
      m_share(host.Memory())
{
    m_reader.emplace(host.ConnectionLimits().maxRequestBytes);
}

void Connection::Start()
{
    Within(m_host.ConnectionLimits().requestTime);
    Open();
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

void Connection::Work()
{
    m_stage = Stage::Working;
    m_timer.cancel();
    // The worker passes its reference on with the answer: the last one has to go on the loop's thread.
    auto finished =
        [self = shared_from_this(), loop = m_stream.Wire().get_executor()](std::string answer) mutable
    {
        asio::post(loop,
                   [self = std::move(self), answer = std::move(answer)]() mutable
                   {
                       if (self->m_stage == Stage::Working)
                           self->Send(std::move(answer));
                   });
    };
    m_exchange = std::make_shared<Exchange>(m_reader->TakeRequest(), std::move(finished));
    m_reader.reset();
    Await(Socket::wait_error, &Connection::OnPeerGone);
    m_host.Serve(m_exchange);
}

void Connection::OnPeerGone()
{
    // Urgent data wakes this as well, and a client that only ended its own sending waits for an answer.
    pollfd socket = {m_stream.Wire().native_handle(), 0, 0};
    if (::poll(&socket, 1, 0) == 1 && (socket.revents & (POLLERR | POLLHUP)) != 0)
        m_exchange->PeerGone();
}

void Connection::Send(std::string answer)
{
    m_exchange.reset();
    m_share.Release();
    m_stage = Stage::Sending;
    m_answer = std::move(answer);
    Within(m_host.ConnectionLimits().requestTime);
    SendMore();
}

void Connection::SendMore()
{
    while (m_sent < m_answer.size())
    {
        const StreamResult result = m_stream.Write(std::string_view(m_answer).substr(m_sent));
        m_sent += result.count;
        if (Await(result, &Connection::SendMore))
        {
            if (!std::exchange(m_kept, true))
                m_share.Keep(m_answer.capacity(), [this] { Close(); });
            return;
        }
        if (result.state != StreamState::Done)
            return Close();
    }
    Linger();
}

void Connection::Linger()
{
    m_share.Release();
    std::string().swap(m_answer);
    m_stage = Stage::Lingering;
    m_stream.EndSending();
    Within(kLingerTime);
    DropInput();
}

void Connection::DropInput()
{
    const StreamResult result = m_stream.Drop(m_host.Scratch());
    m_dropped += result.count;
    const bool more = result.state == StreamState::WaitRead
                          ? !m_host.Ending()
                          : result.state == StreamState::Done && m_dropped < kLingerBytes;
    if (more)
        Await(Socket::wait_read, &Connection::DropInput);
    else
        Close();
}

void Connection::GiveUp()
{
    if (m_stage == Stage::Reading)
        Close();
    else if (m_stage == Stage::Lingering)
        DropInput();
}

void Connection::Close()
{
    if (m_stage == Stage::Closed)
        return;
    const auto self = shared_from_this(); // The host may hold the last reference.
    m_stage = Stage::Closed;
    m_timer.cancel();
    m_stream.Close();
    m_share.Release();
    m_reader.reset();
    m_exchange.reset();
    m_host.Ended(*this);
}

} // namespace tarno::osa
