#pragma once

#include <tarno/osa/TcpSocket.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace fuzzing
{

// A connection on which `input` has arrived, and then its end.
class MemoryConnection final : public tarno::osa::TcpSocket
{
  public:
    // Outlives the socket, which whoever accepts it deletes.
    struct Record
    {
        std::string sent;
        int deleted = 0;
    };

    MemoryConnection(std::string_view input, Record& record) : m_input(input), m_record(record) {}
    ~MemoryConnection() override { ++m_record.deleted; }

    void SetBufferSize(unsigned int) const override {}
    void SendAll(const void* data, unsigned int size) override
    {
        m_record.sent.append(static_cast<const char*>(data), size);
    }
    int Recv(void* data, unsigned int size, unsigned int) override
    {
        const std::size_t count = m_input.copy(static_cast<char*>(data), size);
        m_input.remove_prefix(count);
        return static_cast<int>(count);
    }

  private:
    std::string_view m_input;
    Record& m_record;
};

} // namespace fuzzing
