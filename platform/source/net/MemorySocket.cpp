#include "net/MemorySocket.h"

#include <tarno/osa/SocketException.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace tarno::osa
{
namespace
{

constexpr unsigned kPiecesToALook = 256;
constexpr std::size_t kUsualAnswer = 2000; // bytes; most are shorter

} // namespace

Exchange::Exchange(std::string request, std::function<bool()> gone)
    : m_request(std::move(request)), m_gone(std::move(gone))
{
}

std::size_t Exchange::Read(void* data, std::size_t size)
{
    const std::size_t count = m_request.copy(static_cast<char*>(data), size, m_read);
    m_read += count;
    return count;
}

void Exchange::Write(const void* data, std::size_t size)
{
    if (m_over)
        throw SocketException(SocketException::kInvalid, "The connection has been given back to the server");
    // Answers come in many small pieces, and it is a system call to look.
    m_peerGone = m_peerGone || (++m_pieces % kPiecesToALook == 0 && m_gone());
    if (m_peerGone)
        throw SocketException(SocketException::kError, "The client has closed the connection");
    if (m_answer.empty())
        m_answer.reserve(kUsualAnswer);
    m_answer.append(static_cast<const char*>(data), size);
}

std::string Exchange::Finish()
{
    m_over = true;
    std::string().swap(m_request);
    m_read = 0;
    return std::move(m_answer);
}

MemorySocket::MemorySocket(std::shared_ptr<Exchange> exchange) : m_exchange(std::move(exchange)) {}

// The real socket has the size that the server was given; there is nothing to set here.
void MemorySocket::SetBufferSize(unsigned int /*bytes*/) const {}

void MemorySocket::SendAll(const void* data, unsigned int size) { m_exchange->Write(data, size); }

int MemorySocket::Recv(void* data, unsigned int size, unsigned int /*timeout*/)
{
    constexpr unsigned int kMost = std::numeric_limits<int>::max();
    return static_cast<int>(m_exchange->Read(data, std::min(size, kMost)));
}

} // namespace tarno::osa
