#pragma once

#include <openssl/ssl.h>

#include <string>

namespace client
{

// Makes a context keep, for the thread that uses it, why a handshake fails; it changes no verdict.
void RememberTrouble(SSL_CTX* context);
// A runtime may set the hook of its own at each connection: this is it.
int RememberCertificate(int verdict, X509_STORE_CTX* store);

// What went wrong since the last call on this thread, as a sentence that says what to do: with the
// certificate of the service at `url`, or with ours as the service sees it. Empty if nothing did.
std::string TakeTlsTrouble(const std::string& url);

} // namespace client
