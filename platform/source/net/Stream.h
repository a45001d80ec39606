#pragma once

#include "access/Tls.h"
#include "files/File.h"

#include <memory>
#include <span>
#include <string_view>

namespace tarno::osa
{

// The two directions of one connection, plain or through TLS. Nothing here waits: what can't go on says
// for what. One thread at a time. Closes the connection when it goes.
class Stream
{
  public:
    // A socket that doesn't block. With `tls` everything goes through TLS. Throws std::bad_alloc.
    Stream(analytics::platform::FileHandle socket, std::shared_ptr<TlsContext> tls);

    // What has to be agreed on first; to be repeated until it is Done.
    StreamResult Open();
    StreamResult Read(std::span<char> room);
    // After WaitWrite the next call has to begin with the same bytes. What was written may be kept back for a
    // moment, until Flush() or the end.
    StreamResult Write(std::string_view bytes);
    // Before the peer is waited for: it gets what was written, and its bytes are acknowledged at once. It may
    // be holding the next ones back until they are (Nagle's algorithm).
    void Flush();
    // After NotTls: the peer is answered in what it speaks.
    void GoPlain() { m_tls.reset(); }
    // Tells the peer that nothing more will be sent; without `linger` the connection is to be closed at once,
    // which says the rest.
    void EndSending(bool linger);
    // Whether the peer has sent something that wasn't read. Closing would then cut off what was written.
    bool Unread() const;
    // Reads what the peer still sends without looking at it. To be used after EndSending().
    StreamResult Drop(std::span<char> room);
    bool PeerGone() const;

    int Descriptor() const { return m_socket.Get(); }
    const TlsSession* Tls() const { return m_tls.get(); } // null for a plain one

  private:
    analytics::platform::FileHandle m_socket;
    std::shared_ptr<TlsContext> m_context;
    std::unique_ptr<TlsSession> m_tls; // goes before the socket and the context
};

} // namespace tarno::osa
