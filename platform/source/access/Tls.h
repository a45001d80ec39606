#pragma once

#include <chrono>
#include <cstddef>
#include <ctime>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// TLS as the server sees it, whatever library does it.
namespace tarno::osa
{

// What came of a step on a connection that never waits, plain or through TLS.
enum class StreamState
{
    Done,
    WaitRead,  // again once the socket can be read
    WaitWrite, // again once the socket can be written
    Ended,     // the peer sends no more
    Failed,
    NoCertificate, // the peer has no certificate that is accepted
    NotTls         // the peer speaks plain HTTP where TLS is due
};

struct StreamResult
{
    StreamState state;
    std::size_t count = 0; // bytes read or written
};

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

// A file in PEM form, as it was read.
struct PemFile
{
    std::string path;
    std::string text;
};

// What a TLS context is made of.
struct TlsFiles
{
    PemFile certificate;
    PemFile privateKey;
    std::optional<PemFile> authority; // only clients with a certificate of one in it get in
    std::optional<PemFile> revoked;   // and only with one that no list in it revokes
};

// What all TLS sessions of an endpoint have in common: TLS 1.2 and later, the certificate and its key. Any
// thread.
class TlsContext
{
  public:
    virtual ~TlsContext() = default;

    // Throws std::bad_alloc.
    virtual std::unique_ptr<TlsSession> NewSession(int socket) = 0;
    // When the first certificate of its file ends, in seconds since 1970.
    virtual std::time_t EndOfCertificate() const = 0;
    // Which of the revocation lists has expired, as a name for a person; empty if none has.
    virtual std::string ExpiredRevocationList() const = 0;
};

// Sessions can be resumed for `sessionTime`, none at 0. Throws AccessFault, with the file, if one can't be
// used, or if this build has no TLS (WITH_TLS).
std::shared_ptr<TlsContext> MakeTlsContext(const TlsFiles& files, std::chrono::seconds sessionTime);

} // namespace tarno::osa
