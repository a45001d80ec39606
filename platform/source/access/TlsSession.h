#pragma once

#include "access/StreamResult.h"

#include <span>
#include <string>
#include <string_view>

namespace tarno::osa
{

// The TLS of one connection, on a socket that doesn't block and that outlives it. One thread at a time.
class TlsSession
{
  public:
    virtual ~TlsSession() = default;

    // Again until it yields something else than waiting. After Failed the peer has been told why.
    virtual StreamResult Handshake() = 0;
    virtual StreamResult Read(std::span<char> room) = 0;
    // After WaitWrite the next call has to begin with the same bytes.
    virtual StreamResult Write(std::string_view bytes) = 0;
    // Whether the peer has sent anything.
    virtual bool Begun() const = 0;
    // After the handshake: whether it went on with an earlier session.
    virtual bool Resumed() const = 0;
    // After the handshake: the last common name of the client's certificate as "CN=..."; empty without one.
    virtual std::string PeerName() const = 0;
    // Tells the peer that nothing more will come, if it can be told without waiting.
    virtual void End() = 0;
};

} // namespace tarno::osa
