// The second half of a connection: from a whole request to the end.

#include "net/Connection.h"

#include "net/MemorySocket.h"

#include <boost/asio/post.hpp>

#include <poll.h>

#include <utility>

namespace tarno::osa
{
namespace
{

namespace asio = boost::asio;

// A client that still sends when it is answered gets the answer only if it isn't cut off meanwhile.
// For this long and this much its bytes are read and dropped.
constexpr std::chrono::seconds kLingerTime(3);
constexpr std::size_t kLingerBytes = 67'108'864;

} // namespace

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
