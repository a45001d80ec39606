#include "net/DirectConnection.h"

#include "net/Limits.h"
#include "net/Listener.h"
#include "net/RequestReader.h"

#include <poll.h>
#include <sched.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <utility>

namespace tarno::osa
{
using analytics::platform::FileHandle;
namespace
{

constexpr int kLooks = 4; // for the first bytes

} // namespace

DirectConnection::~DirectConnection()
{
    if (!m_socket)
        return;
    {
        const FileHandle closed(std::move(m_socket)); // before anybody is told
    }
    m_host.DirectEnded();
}

bool DirectConnection::Accept(Listener& listener)
{
    m_socket = FileHandle(listener.Accept());
    return static_cast<bool>(m_socket);
}

int DirectConnection::Release() { return m_socket.Release(); }

std::optional<std::string> DirectConnection::Receive(std::size_t maxRequestBytes)
{
    std::array<char, kFreeBytes> room;
    ssize_t count = -1;
    // A client on this machine may have been stopped between connecting and sending, for this thread. It
    // isn't waited for: who doesn't send at his next turn is left to the loop.
    for (int look = 0; look < kLooks && count < 0; ++look)
    {
        if (look > 0)
            sched_yield();
        count = ::recv(Socket(), room.data(), room.size(), MSG_DONTWAIT);
    }
    if (count == 0 || (count < 0 && errno != EAGAIN))
        return {}; // The peer is gone.
    if (count > 0)
    {
        const std::string_view bytes(room.data(), static_cast<std::size_t>(count));
        RequestReader reader(maxRequestBytes);
        if (reader.Take(bytes) == RequestReader::Outcome::Complete && !reader.MoreCame())
            return reader.TakeRequest();
        received = bytes;
    }
    m_host.Adopt(shared_from_this());
    return {};
}

void DirectConnection::Answer(std::string text)
{
    // What is there to be read when a socket is closed makes the system throw away what was sent. Until
    // that is known, the system keeps the last bytes back; then they go out with the end.
    const ssize_t count =
        text.empty() ? 0 : ::send(Socket(), text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL | MSG_MORE);
    if (count < 0 && errno != EAGAIN)
        return;
    text.erase(0, count < 0 ? 0 : static_cast<std::size_t>(count));
    char next = 0;
    if (text.empty() && ::recv(Socket(), &next, 1, MSG_DONTWAIT | MSG_PEEK) <= 0)
        return;
    answer = std::move(text);
    answered = true;
    m_host.Adopt(shared_from_this());
}

bool DirectConnection::PeerGone() const
{
    pollfd socket = {Socket(), 0, 0};
    return ::poll(&socket, 1, 0) == 1 && (socket.revents & (POLLERR | POLLHUP)) != 0;
}

} // namespace tarno::osa
