#include "net/Stream.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

namespace tarno::osa
{
namespace
{

StreamResult Result(ssize_t count, StreamState whileWaiting)
{
    if (count >= 0)
        return {StreamState::Done, static_cast<std::size_t>(count)};
    return {errno == EAGAIN || errno == EINTR ? whileWaiting : StreamState::Failed};
}

void Set(int socket, int option)
{
    const int on = 1;
    // If the connection is gone by now, the next read or write says so.
    setsockopt(socket, IPPROTO_TCP, option, &on, sizeof on);
}

StreamResult ReadPlain(int socket, std::span<char> room)
{
    const ssize_t count = recv(socket, room.data(), room.size(), 0);
    return count == 0 ? StreamResult{StreamState::Ended} : Result(count, StreamState::WaitRead);
}

} // namespace

Stream::Stream(analytics::platform::FileHandle socket, std::shared_ptr<TlsContext> tls)
    : m_socket(std::move(socket)), m_context(std::move(tls))
{
    if (m_context != nullptr)
        m_tls = m_context->NewSession(m_socket.Get());
}

StreamResult Stream::Open()
{
    return m_tls == nullptr ? StreamResult{StreamState::Done} : m_tls->Handshake();
}

StreamResult Stream::Read(std::span<char> room)
{
    return m_tls == nullptr ? ReadPlain(m_socket.Get(), room) : m_tls->Read(room);
}

StreamResult Stream::Write(std::string_view bytes)
{
    if (m_tls != nullptr)
        return m_tls->Write(bytes);
    // The last bytes go out with the end of the connection, or with Flush().
    return Result(send(m_socket.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_MORE),
                  StreamState::WaitWrite);
}

void Stream::Flush()
{
    Set(m_socket.Get(), TCP_NODELAY); // sends what was kept back
    Set(m_socket.Get(), TCP_QUICKACK);
}

void Stream::EndSending(bool linger)
{
    if (m_tls != nullptr)
        m_tls->End();
    m_tls.reset();
    if (linger)
        shutdown(m_socket.Get(), SHUT_WR);
}

bool Stream::Unread() const
{
    char next = 0;
    return recv(m_socket.Get(), &next, 1, MSG_PEEK) > 0;
}

StreamResult Stream::Drop(std::span<char> room) { return ReadPlain(m_socket.Get(), room); }

bool Stream::PeerGone() const
{
    pollfd socket = {m_socket.Get(), 0, 0};
    return poll(&socket, 1, 0) == 1 && (socket.revents & (POLLERR | POLLHUP)) != 0;
}

} // namespace tarno::osa
