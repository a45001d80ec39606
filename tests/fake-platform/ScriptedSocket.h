#pragma once

#include <tarno/osa/TcpSocket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace fake
{

// What a ScriptedSocket was asked; outlives the socket, which whoever accepts it deletes.
struct SocketRecord
{
    std::string sent;
    std::vector<unsigned int> timeouts;    // of each Recv
    std::vector<unsigned int> bufferSizes; // of each SetBufferSize
    int deleted = 0;
};

// A connection on which `input` has arrived and then the stream ended. `onRecv` and `onSend` come
// before the call does anything, and may throw; `onRecv` may also return a negative result.
class ScriptedSocket : public tarno::osa::TcpSocket
{
  public:
    ScriptedSocket(SocketRecord& record, std::string input) : m_record(record), m_input(std::move(input)) {}
    ~ScriptedSocket() override { ++m_record.deleted; }

    void SetBufferSize(unsigned int bytes) const override { m_record.bufferSizes.push_back(bytes); }

    void SendAll(const void* data, unsigned int size) override
    {
        onSend();
        m_record.sent.append(static_cast<const char*>(data), size);
    }

    int Recv(void* data, unsigned int size, unsigned int timeout) override
    {
        m_record.timeouts.push_back(timeout);
        const int scripted = onRecv();
        if (scripted < 0)
            return scripted;
        const std::size_t count = std::min({std::size_t{size}, piece, m_input.size()});
        std::memcpy(data, m_input.data(), count);
        m_input.erase(0, count);
        return static_cast<int>(count);
    }

    std::function<void()> onSend = [] {};
    std::function<int()> onRecv = [] { return 0; };
    std::size_t piece = std::string::npos; // bytes that arrive at a time, at most

  private:
    SocketRecord& m_record;
    std::string m_input;
};

inline tarno::osa::SocketException Error(int number)
{
    return {static_cast<tarno::osa::SocketException::SocketError>(number), "scripted"};
}

} // namespace fake
