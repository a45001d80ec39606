#pragma once

#include "access/Tls.h"

#include <memory>

struct ssl_ctx_st;
struct ssl_st;

namespace tarno::osa
{

class OpenSslSession : public TlsSession
{
  public:
    // Throws std::bad_alloc.
    OpenSslSession(ssl_ctx_st& context, int socket);

    StreamResult Handshake() override;
    StreamResult Read(std::span<char> room) override;
    StreamResult Write(std::string_view bytes) override;
    bool Begun() const override;
    bool Resumed() const override;
    std::string PeerName() const override;
    void End() override;

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
