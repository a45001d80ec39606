#include "access/TlsContext.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>

#include <functional>

namespace tarno::osa
{
namespace
{

template <auto kFree>
struct Free
{
    template <class T>
    void operator()(T* object) const
    {
        kFree(object);
    }
};
using Bio = std::unique_ptr<BIO, Free<BIO_free>>;
using Certificate = std::unique_ptr<X509, Free<X509_free>>;
using Key = std::unique_ptr<EVP_PKEY, Free<EVP_PKEY_free>>;

// Forward secrecy and authenticated encryption only, for TLS 1.2; all of TLS 1.3 are so.
constexpr char kCiphers[] = "ECDHE+AESGCM:ECDHE+CHACHA20";
// A client needs one certificate and perhaps one or two between it and the authority.
constexpr int kChainLength = 4;
constexpr long kChainBytes = 32'768;

[[noreturn]] void Fail(const PemFile& file, const std::string& sentence)
{
    ERR_clear_error();
    throw AccessFault(file.path + ": " + sentence);
}

void Check(bool done, const PemFile& file, const char* sentence)
{
    if (done)
        return;
    const char* const reason = ERR_reason_error_string(ERR_peek_last_error());
    Fail(file, std::string(sentence) + (reason == nullptr ? "" : std::string(" (") + reason + ")"));
}

Bio Open(const PemFile& file)
{
    Bio bio(BIO_new_mem_buf(file.text.data(), static_cast<int>(file.text.size())));
    if (bio == nullptr)
        throw std::bad_alloc();
    return bio;
}

// Nobody is asked for a passphrase.
int NoPassphrase(char* /*room*/, int /*size*/, int /*writing*/, void* /*data*/) { return -1; }

// Each certificate of the file, the first one first; at least one.
void ForEachCertificate(const PemFile& file, const std::function<void(X509*)>& use)
{
    const Bio bio = Open(file);
    int count = 0;
    for (Certificate next; next.reset(PEM_read_bio_X509(bio.get(), nullptr, NoPassphrase, nullptr)), next;
         ++count)
        use(next.get());
    const bool ended = ERR_GET_REASON(ERR_peek_last_error()) == PEM_R_NO_START_LINE;
    Check(count > 0 && ended, file,
          "it can't be read as certificates; it has to hold one or more in PEM form, BEGIN CERTIFICATE");
    ERR_clear_error();
}

void UseCertificate(SSL_CTX* context, const PemFile& file)
{
    bool first = true;
    ForEachCertificate(file,
                       [&](X509* certificate)
                       {
                           const bool taken = first ? SSL_CTX_use_certificate(context, certificate) == 1
                                                    : SSL_CTX_add1_chain_cert(context, certificate) == 1;
                           first = false;
                           Check(taken, file, "a certificate in it can't be used; make a new one");
                       });
}

void UseKey(SSL_CTX* context, const PemFile& file, const PemFile& certificate)
{
    const Bio bio = Open(file);
    const Key key(PEM_read_bio_PrivateKey(bio.get(), nullptr, NoPassphrase, nullptr));
    Check(key != nullptr, file,
          "it can't be read as a private key; it has to hold one in PEM form, without a passphrase");
    if (X509_check_private_key(SSL_CTX_get0_certificate(context), key.get()) != 1)
        Fail(file, "it is not the private key of the certificate in " + certificate.path +
                       "; name the two that belong together");
    Check(SSL_CTX_use_PrivateKey(context, key.get()) == 1, file,
          "the private key can't be used; make a new one");
}

void RequireClientCertificates(SSL_CTX* context, const PemFile& file)
{
    ForEachCertificate(file,
                       [&](X509* certificate)
                       {
                           const bool taken =
                               X509_STORE_add_cert(SSL_CTX_get_cert_store(context), certificate) == 1 &&
                               SSL_CTX_add_client_CA(context, certificate) == 1;
                           Check(taken, file, "a certificate in it can't be used; name another authority");
                       });
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
    SSL_CTX_set_verify_depth(context, kChainLength);
    SSL_CTX_set_max_cert_list(context, kChainBytes);
}

void SetRules(SSL_CTX* context)
{
    SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
    SSL_CTX_set_cipher_list(context, kCiphers);
    // A client that ends without TLS's own goodbye is no error: HTTP says where a request ends.
    SSL_CTX_set_options(context, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION | SSL_OP_NO_TICKET |
                                     SSL_OP_IGNORE_UNEXPECTED_EOF | SSL_OP_CIPHER_SERVER_PREFERENCE);
    // Nothing is kept between the connections of a client, and little while one is idle. Without
    // auto-retry, a stream of records that carry nothing leaves the others their turn.
    SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_num_tickets(context, 0);
    SSL_CTX_clear_mode(context, SSL_MODE_AUTO_RETRY);
    SSL_CTX_set_mode(context, SSL_MODE_RELEASE_BUFFERS | SSL_MODE_ENABLE_PARTIAL_WRITE |
                                  SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
}

} // namespace

std::shared_ptr<ssl_ctx_st> MakeTlsContext(const PemFile& certificate, const PemFile& privateKey,
                                           const PemFile* authority)
{
    const std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    if (context == nullptr)
        throw std::bad_alloc();
    SetRules(context.get());
    UseCertificate(context.get(), certificate);
    UseKey(context.get(), privateKey, certificate);
    if (authority != nullptr)
        RequireClientCertificates(context.get(), *authority);
    return context;
}

} // namespace tarno::osa
