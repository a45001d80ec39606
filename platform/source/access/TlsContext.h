#pragma once

#include "access/Users.h"

#include <memory>
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

// What all TLS sessions of an endpoint have in common: TLS 1.2 and later, the certificate and its key.
// With `authority`, only clients that have a certificate signed by one of its certificates get in.
// Throws AccessFault, with the file.
std::shared_ptr<ssl_ctx_st> MakeTlsContext(const PemFile& certificate, const PemFile& privateKey,
                                           const PemFile* authority);

} // namespace tarno::osa
