#pragma once

#include "access/Users.h"

#include <chrono>
#include <ctime>
#include <memory>
#include <optional>
#include <string>

struct ssl_ctx_st;

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

// What all TLS sessions of an endpoint have in common: TLS 1.2 and later, the certificate and its key.
// Sessions can be resumed for `sessionTime`, none at 0. Throws AccessFault, with the file.
std::shared_ptr<ssl_ctx_st> MakeTlsContext(const TlsFiles& files, std::chrono::seconds sessionTime);

// When the first certificate of a file ends, in seconds since 1970. Throws AccessFault.
std::time_t EndOfCertificate(const PemFile& file);

// Which of the lists in a file of revocation lists has expired, as a name for a person; empty if none has.
// Throws AccessFault.
std::string ExpiredRevocationList(const PemFile& file);

} // namespace tarno::osa
