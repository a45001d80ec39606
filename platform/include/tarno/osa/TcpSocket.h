#pragma once

namespace tarno::osa
{

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
