#include "net/MemorySocket.h"

#include <tarno/osa/TcpServer.h>
#include <tarno/osa/TcpSocket.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <memory>
#include <utility>

namespace tarno::osa
{
namespace
{

constexpr unsigned kPiecesToALook = 256;
constexpr std::size_t kUsualAnswer = 2000; // bytes; most are shorter

// A request and its answer, while an acceptor has them to itself.
struct Exchange
{
    Exchange(std::string received, std::function<bool()> isGone)
        : request(std::move(received)), gone(std::move(isGone))
    {
    }

    std::string request;
    const std::function<bool()> gone;
    std::size_t read = 0;
    std::string answer;
    unsigned pieces = 0; // of the answer
    bool peerGone = false;
    std::atomic<bool> over = false;
};

class MemorySocket final : public TcpSocket
{
  public:
    explicit MemorySocket(std::shared_ptr<Exchange> exchange) : m_exchange(std::move(exchange)) {}

    // The real socket has the size that the server was given; there is nothing to set here.
    void SetBufferSize(unsigned int /*bytes*/) const override {}
    void SendAll(const void* data, unsigned int size) override
    {
        Exchange& all = *m_exchange;
        if (all.over)
            throw SocketException(SocketException::kInvalid,
                                  "The connection has been given back to the server");
        // Answers come in many small pieces, and it is a system call to look.
        all.peerGone = all.peerGone || (++all.pieces % kPiecesToALook == 0 && all.gone());
        if (all.peerGone)
            throw SocketException(SocketException::kError, "The client has closed the connection");
        if (all.answer.empty())
            all.answer.reserve(kUsualAnswer);
        all.answer.append(static_cast<const char*>(data), size);
    }
    int Recv(void* data, unsigned int size, unsigned int /*timeout*/) override
    {
        constexpr unsigned int kMost = std::numeric_limits<int>::max();
        Exchange& all = *m_exchange;
        const std::size_t count = all.request.copy(static_cast<char*>(data), std::min(size, kMost), all.read);
        all.read += count;
        return static_cast<int>(count);
    }

  private:
    const std::shared_ptr<Exchange> m_exchange;
};

} // namespace

std::string AnswerOf(ITcpSocketAccept& acceptor, std::string request, std::function<bool()> gone)
{
    const auto exchange = std::make_shared<Exchange>(std::move(request), std::move(gone));
    acceptor.AcceptSocket(new MemorySocket(exchange)); // which owns it from here on
    // The answer ends here even if the acceptor couldn't release its socket.
    exchange->over = true;
    exchange->read = 0;
    std::string().swap(exchange->request);
    return std::move(exchange->answer);
}

} // namespace tarno::osa
