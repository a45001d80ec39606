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
    // `gone` is asked now and then while the answer is written, whether it still has a reader.
    Exchange(std::string request, std::function<bool()> gone);

    std::size_t Read(void* data, std::size_t size); // 0 at the end of the request
    // Throws SocketException if the answer has no reader, or after Finish().
    void Write(const void* data, std::size_t size);
    std::string Finish(); // the answer; once

  private:
    std::string m_request;
    std::size_t m_read = 0;
    std::string m_answer;
    unsigned m_pieces = 0; // of the answer
    std::function<bool()> m_gone;
    bool m_peerGone = false;
    std::atomic<bool> m_over = false;
};

// What a worker sees of a connection: the whole request to read, and an answer that is collected. It never
// waits.
class MemorySocket final : public TcpSocket
{
  public:
    explicit MemorySocket(std::shared_ptr<Exchange> exchange);

    void SetBufferSize(unsigned int bytes) const override;
    void SendAll(const void* data, unsigned int size) override;
    int Recv(void* data, unsigned int size, unsigned int timeout) override;

  private:
    const std::shared_ptr<Exchange> m_exchange;
};

} // namespace tarno::osa
