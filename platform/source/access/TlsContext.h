#pragma once

#include "access/TlsSession.h"
#include "access/Users.h"

#include <chrono>
#include <ctime>
#include <memory>
#include <optional>
#include <string>

namespace tarno::osa
{

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
