#pragma once

#include <tarno/osa/TcpSocket.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace tarno::osa
{

// A request and its answer on their way through a worker, which has them to itself until Finish().
class Exchange
{
  public:
    // `finished` gets the answer, on the worker's thread. If nobody calls PeerGone(), `gone` is
    // asked now and then while the answer is written.
    Exchange(std::string request, std::function<void(std::string answer)> finished,
             std::function<bool()> gone = nullptr);

    std::size_t Read(void* data, std::size_t size); // 0 at the end of the request
    void Write(const void* data, std::size_t size); // throws SocketException if nobody waits for it
    void PeerGone() { m_peerGone = true; }          // any thread: the answer has no reader any more
    void Finish();                                  // only the first call does something

  private:
    void LookForReader();

    std::string m_request;
    std::size_t m_read = 0;
    std::string m_answer;
    unsigned m_pieces = 0; // of the answer
    std::function<void(std::string answer)> m_finished;
    std::function<bool()> m_gone;
    std::atomic<bool> m_over = false;
    std::atomic<bool> m_peerGone = false;
};

// What a worker sees of a connection: the whole request to read, and an answer that is collected and
// goes out when the socket is deleted. It never waits.
class MemorySocket final : public TcpSocket
{
  public:
    explicit MemorySocket(std::shared_ptr<Exchange> exchange);
    ~MemorySocket() override;

    void SetBufferSize(unsigned int bytes) const override;
    void SendAll(const void* data, unsigned int size) override;
    int Recv(void* data, unsigned int size, unsigned int timeout) override;

  private:
    const std::shared_ptr<Exchange> m_exchange;
};

} // namespace tarno::osa
