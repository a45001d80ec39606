#pragma once

#include <memory>

namespace tarno::osa
{

class TcpSocket;

// Who serves the connections of a server.
class ITcpSocketAccept
{
  public:
    virtual ~ITcpSocketAccept();

    // Called on a thread of the server, which it occupies until it returns; on many at a time. The
    // socket belongs to the one called. Must not throw.
    virtual void AcceptSocket(TcpSocket* socket) = 0;
};

// An HTTP server's socket side. It hands a connection over only when a whole request has arrived
// within its limits, and answers by itself what never becomes one (400, 408, 413), so that slow or
// broken clients occupy no thread. Its limits are the settings under "//server".
class TcpServer
{
  public:
    // `address` "kestrile-server" with port 0 stands for the configured endpoint; any other pair is
    // taken as it is, a numeric address and a port. Nothing is opened yet.
    TcpServer(const char* address, unsigned short port);
    virtual ~TcpServer(); // stops
    TcpServer(const TcpServer&) = delete;
    TcpServer& operator=(const TcpServer&) = delete;

    // False once the server has stopped listening, or if it never did.
    virtual bool Listening() const;
    // Ends listening, closes every connection and returns when no AcceptSocket runs any more. May be
    // called twice and from any thread, but not from within AcceptSocket.
    virtual void Stop();

    // Send and receive buffers of the sockets, in bytes. Takes effect at Start().
    void SetBufferSize(unsigned int bytes) const;
    // Listens and returns; connections are served on the server's own threads from then on.
    // `acceptor` must outlive them. `backlog` is the length of the kernel's queue of connections that
    // wait to be accepted. Throws SocketException (kBindError) with a sentence for the operator.
    void Start(ITcpSocketAccept* acceptor, unsigned short backlog);

  private:
    struct Loop;
    std::shared_ptr<Loop> m_loop;
};

} // namespace tarno::osa
