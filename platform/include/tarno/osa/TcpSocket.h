#pragma once

#include <stdexcept>
#include <string>

namespace tarno::osa
{

class SocketException : public std::runtime_error
{
  public:
    enum SocketError : int // a platform may hand over other numbers as well
    {
        kTimeout = 0,
        kBindError = 1,
        kInvalid = 2,
        kError = 3
    };

    SocketException(SocketError error, const std::string& what);
    ~SocketException() override;

    SocketError GetError() const;

  private:
    SocketError m_error;
};

// One accepted connection, used by one thread at a time. Deleting it ends the connection once what
// was sent has gone out. All operations but the destructor may throw SocketException.
class TcpSocket
{
  public:
    virtual ~TcpSocket();
    TcpSocket(const TcpSocket&) = delete;
    TcpSocket& operator=(const TcpSocket&) = delete;

    virtual void SetBufferSize(unsigned int bytes) const = 0;
    // Sends all `size` bytes or throws.
    virtual void SendAll(const void* data, unsigned int size) = 0;
    // Waits `timeout` seconds at most for the first byte, and throws kTimeout after that. Returns the
    // number of bytes read, 0 at the end of the stream; negative with the reason in errno.
    virtual int Recv(void* data, unsigned int size, unsigned int timeout) = 0;

  protected:
    TcpSocket();
};

} // namespace tarno::osa
