#pragma once

#include "access/StreamResult.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>

struct ssl_ctx_st;
struct ssl_st;

namespace tarno::osa
{

// The TLS of one connection, on a socket that doesn't block and that outlives it. One thread at a time.
class TlsSession
{
  public:
    // Throws std::bad_alloc.
    TlsSession(ssl_ctx_st& context, int socket);

    // Again until it yields something else than waiting. After Failed the peer has been told why.
    StreamResult Handshake();
    StreamResult Read(std::span<char> room);
    // After WaitWrite the next call has to begin with the same bytes.
    StreamResult Write(std::string_view bytes);
    // Whether the peer has sent anything.
    bool Begun() const;
    // After the handshake: whether it went on with an earlier session.
    bool Resumed() const;
    // After the handshake: the last common name of the client's certificate as "CN=..."; empty without one.
    std::string PeerName() const;
    // Tells the peer that nothing more will come, if it can be told without waiting.
    void End();

  private:
    StreamResult Outcome(int result);

    struct Free
    {
        void operator()(ssl_st* session) const;
    };
    std::unique_ptr<ssl_st, Free> m_session;
    bool m_sound = false; // from the end of the handshake to the first failure
};

} // namespace tarno::osa
