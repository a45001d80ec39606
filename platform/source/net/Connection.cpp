#include "net/Connection.h"

#include "net/MemorySocket.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
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

bool MustWait(const Error& error) { return error == asio::error::would_block; }

} // namespace

Connection::Connection(Socket socket, ConnectionHost& host)
    : m_host(host), m_socket(std::move(socket)), m_timer(m_socket.get_executor()), m_share(host.Memory())
{
    m_reader.emplace(host.ConnectionLimits().maxRequestBytes);
}

void Connection::Start()
{
    Within(m_host.ConnectionLimits().requestTime);
    Error ignored; // A connection that is gone by now shows it at the first read.
    m_socket.non_blocking(true, ignored);
    m_socket.set_option(asio::ip::tcp::no_delay(true), ignored);
    ReadRequest();
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
    else if (m_stage != Stage::Working)
        Close();
}

void Connection::Await(Socket::wait_type event, Step next)
{
    m_socket.async_wait(event,
                        [self = shared_from_this(), stage = m_stage, next](const Error& error)
                        {
                            if (!error && self->m_stage == stage)
                                (self.get()->*next)();
                        });
}

void Connection::ReadRequest()
{
    const std::size_t held = m_reader->Held();
    const std::span<char> scratch = m_host.Scratch();
    // Twice as much, since a string that grows takes more than it needs.
    if (held >= kFreeBytes && !m_share.Ask(2 * (held + scratch.size()), [this] { AwaitRequest(); }))
        return;
    Error error;
    const std::size_t most = held < kFreeBytes ? kFreeBytes - held : scratch.size();
    const std::size_t count = m_socket.read_some(asio::buffer(scratch.data(), most), error);
    if (MustWait(error))
        AwaitRequest();
    else if (error == asio::error::eof && m_reader->Started())
        Refuse(Refusal::Truncated);
    else if (error)
        Close();
    else
        Judge(m_reader->Take({scratch.data(), count}));
}

void Connection::Judge(RequestReader::Outcome outcome)
{
    if (outcome == RequestReader::Outcome::Complete)
        return Work();
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
    Error error;
    // The first bytes on this connection: they fit into the socket's buffer.
    if (m_socket.write_some(asio::buffer(kText), error) != kText.size())
        Close();
}

void Connection::Refuse(Refusal reason)
{
    m_share.Release();
    m_reader.reset();
    Send(RefusalResponse(reason, m_host.ConnectionLimits()));
}

void Connection::Work()
{
    m_stage = Stage::Working;
    m_timer.cancel();
    // The worker passes its reference on with the answer: the last one has to go on the loop's thread.
    auto finished = [self = shared_from_this(), loop = m_socket.get_executor()](std::string answer) mutable
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
    pollfd socket = {m_socket.native_handle(), 0, 0};
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
        Error error;
        m_sent += m_socket.write_some(asio::buffer(m_answer) + m_sent, error);
        if (MustWait(error))
        {
            if (!std::exchange(m_kept, true))
                m_share.Keep(m_answer.capacity(), [this] { Close(); });
            return Await(Socket::wait_write, &Connection::SendMore);
        }
        if (error)
            return Close();
    }
    Linger();
}

void Connection::Linger()
{
    m_share.Release();
    std::string().swap(m_answer);
    m_stage = Stage::Lingering;
    Error ignored; // If the peer is gone, the next read says so.
    m_socket.shutdown(Socket::shutdown_send, ignored);
    Within(kLingerTime);
    DropInput();
}

void Connection::DropInput()
{
    Error error;
    const std::span<char> scratch = m_host.Scratch();
    m_dropped += m_socket.read_some(asio::buffer(scratch.data(), scratch.size()), error);
    const bool more = MustWait(error) ? !m_host.Ending() : !error && m_dropped < kLingerBytes;
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
    Error ignored;
    m_socket.close(ignored);
    m_share.Release();
    m_reader.reset();
    m_exchange.reset();
    m_host.Ended(*this);
}

} // namespace tarno::osa
