#include "access/AccessSettings.h"
#include "access/Tls.h"
#include "tls/SessionCache.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <functional>
#include <new>
#include <utility>

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
using List = std::unique_ptr<X509_CRL, Free<X509_CRL_free>>;
using Key = std::unique_ptr<EVP_PKEY, Free<EVP_PKEY_free>>;

// Forward secrecy and authenticated encryption only. AES with 128 bits comes first: it and SHA-256 are as
// strong as the keys that are exchanged, and take less of a camera's processor than 256 bits and SHA-384.
constexpr char kCiphers[] = "ECDHE+AESGCM+AES128:ECDHE+AESGCM:ECDHE+CHACHA20"; // TLS 1.2
constexpr char kSuites[] =
    "TLS_AES_128_GCM_SHA256:TLS_AES_256_GCM_SHA384:TLS_CHACHA20_POLY1305_SHA256"; // TLS 1.3
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

// What PEM_read_bio_X509() and the like have in common.
template <class T>
using Reader = T* (*)(BIO*, T**, pem_password_cb*, void*);

// Each object of the file, the first one first; at least one.
template <class Object, class T>
void ForEach(const PemFile& file, Reader<T> read, const char* sentence, const std::function<void(T*)>& use)
{
    const Bio bio = Open(file);
    int count = 0;
    for (Object next; next.reset(read(bio.get(), nullptr, NoPassphrase, nullptr)), next; ++count)
        use(next.get());
    const bool ended = ERR_GET_REASON(ERR_peek_last_error()) == PEM_R_NO_START_LINE;
    Check(count > 0 && ended, file, sentence);
    ERR_clear_error();
}

void ForEachCertificate(const PemFile& file, const std::function<void(X509*)>& use)
{
    ForEach<Certificate>(
        file, PEM_read_bio_X509,
        "it can't be read as certificates; it has to hold one or more in PEM form, BEGIN CERTIFICATE", use);
}

void ForEachList(const PemFile& file, const std::function<void(X509_CRL*)>& use)
{
    ForEach<List>(
        file, PEM_read_bio_X509_CRL,
        "it can't be read as revocation lists; it has to hold one or more in PEM form, BEGIN X509 CRL", use);
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

// A list that has expired still counts, and an authority without a list isn't checked.
int JudgeRevocation(int good, X509_STORE_CTX* check)
{
    const int error = X509_STORE_CTX_get_error(check);
    if (good == 1 || (error != X509_V_ERR_UNABLE_TO_GET_CRL && error != X509_V_ERR_CRL_HAS_EXPIRED))
        return good;
    X509_STORE_CTX_set_error(check, X509_V_OK);
    return 1;
}

void RefuseRevoked(SSL_CTX* context, const PemFile& file)
{
    X509_STORE* const store = SSL_CTX_get_cert_store(context);
    ForEachList(file,
                [&](X509_CRL* list)
                {
                    Check(X509_STORE_add_crl(store, list) == 1, file,
                          "a revocation list in it can't be used; name another");
                });
    X509_STORE_set_flags(store, X509_V_FLAG_CRL_CHECK | X509_V_FLAG_CRL_CHECK_ALL);
    X509_STORE_set_verify_cb(store, JudgeRevocation);
}

void SetRules(SSL_CTX* context)
{
    SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
    SSL_CTX_set_cipher_list(context, kCiphers);
    SSL_CTX_set_ciphersuites(context, kSuites);
    // A client that ends without TLS's own goodbye is not an error: HTTP says where a request ends.
    SSL_CTX_set_options(context, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION | SSL_OP_NO_TICKET |
                                     SSL_OP_IGNORE_UNEXPECTED_EOF | SSL_OP_CIPHER_SERVER_PREFERENCE);
    // Nothing is kept between the connections of a client unless its sessions can be resumed, and little
    // while one is idle. Without auto-retry, a stream of records that carry nothing leaves the others their
    // turn.
    SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_num_tickets(context, 0);
    SSL_CTX_clear_mode(context, SSL_MODE_AUTO_RETRY);
    SSL_CTX_set_mode(context, SSL_MODE_RELEASE_BUFFERS | SSL_MODE_ENABLE_PARTIAL_WRITE |
                                  SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
}

class OpenSslSession : public TlsSession
{
  public:
    // Throws std::bad_alloc.
    OpenSslSession(SSL_CTX& context, int socket);

    StreamResult Handshake() override
    {
        ERR_clear_error();
        const StreamResult result = Outcome(SSL_do_handshake(m_session.get()));
        m_sound = result.state == StreamState::Done;
        return result;
    }
    StreamResult Read(std::span<char> room) override
    {
        ERR_clear_error();
        return Outcome(SSL_read(m_session.get(), room.data(), static_cast<int>(room.size())));
    }
    StreamResult Write(std::string_view bytes) override
    {
        constexpr std::size_t kRecord = SSL3_RT_MAX_PLAIN_LENGTH;
        ERR_clear_error();
        return Outcome(
            SSL_write(m_session.get(), bytes.data(), static_cast<int>(std::min(bytes.size(), kRecord))));
    }
    bool Begun() const override { return BIO_number_read(SSL_get_rbio(m_session.get())) > 0; }
    bool Resumed() const override { return SSL_session_reused(m_session.get()) == 1; }
    std::string PeerName() const override;
    void End() override
    {
        if (!m_sound)
            return;
        ERR_clear_error();
        SSL_shutdown(m_session.get());
        ERR_clear_error();
    }

  private:
    StreamResult Outcome(int result);

    const std::unique_ptr<SSL, Free<SSL_free>> m_session;
    bool m_sound = false; // from the end of the handshake to the first failure
};

OpenSslSession::OpenSslSession(SSL_CTX& context, int socket) : m_session(SSL_new(&context))
{
    // Not SSL_set_fd(), which asks the kernel to do a part of TLS.
    BIO* const bio = m_session == nullptr ? nullptr : BIO_new_socket(socket, BIO_NOCLOSE);
    if (bio == nullptr)
        throw std::bad_alloc();
    SSL_set_bio(m_session.get(), bio, bio);
    SSL_set_accept_state(m_session.get());
}

StreamResult OpenSslSession::Outcome(int result)
{
    const auto done = static_cast<std::size_t>(result > 0 ? result : 0);
    switch (SSL_get_error(m_session.get(), result))
    {
    case SSL_ERROR_NONE:
        return {StreamState::Done, done};
    case SSL_ERROR_WANT_READ:
        return {StreamState::WaitRead};
    case SSL_ERROR_WANT_WRITE:
        return {StreamState::WaitWrite};
    case SSL_ERROR_ZERO_RETURN:
        return {StreamState::Ended};
    default:
        break;
    }
    m_sound = false;
    const int reason = ERR_GET_REASON(ERR_peek_error());
    ERR_clear_error();
    if (reason == SSL_R_PEER_DID_NOT_RETURN_A_CERTIFICATE || reason == SSL_R_CERTIFICATE_VERIFY_FAILED)
        return {StreamState::NoCertificate};
    return {reason == SSL_R_HTTP_REQUEST ? StreamState::NotTls : StreamState::Failed};
}

std::string OpenSslSession::PeerName() const
{
    X509* const certificate = SSL_get0_peer_certificate(m_session.get());
    if (certificate == nullptr)
        return "";
    X509_NAME* const subject = X509_get_subject_name(certificate);
    int last = -1;
    for (int next = -1; (next = X509_NAME_get_index_by_NID(subject, NID_commonName, next)) >= 0;)
        last = next;
    unsigned char* text = nullptr;
    const int size =
        last < 0 ? -1
                 : ASN1_STRING_to_UTF8(&text, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, last)));
    std::string name = "CN=";
    if (size > 0)
        name.append(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
    OPENSSL_free(text);
    return name;
}

class OpenSslContext : public TlsContext
{
  public:
    OpenSslContext(const TlsFiles& files, std::chrono::seconds sessionTime)
        : m_revoked(files.revoked), m_context(SSL_CTX_new(TLS_server_method()))
    {
        if (m_context == nullptr)
            throw std::bad_alloc();
        SetRules(m_context.get());
        UseCertificate(m_context.get(), files.certificate);
        UseKey(m_context.get(), files.privateKey, files.certificate);
        if (files.authority)
            RequireClientCertificates(m_context.get(), *files.authority);
        if (files.revoked)
            RefuseRevoked(m_context.get(), *files.revoked);
        if (sessionTime.count() > 0)
            m_cache.Serve(*m_context, sessionTime);
    }

    std::unique_ptr<TlsSession> NewSession(int socket) override
    {
        return std::make_unique<OpenSslSession>(*m_context, socket);
    }
    std::time_t EndOfCertificate() const override
    {
        tm end = {};
        ASN1_TIME_to_tm(X509_get0_notAfter(SSL_CTX_get0_certificate(m_context.get())), &end);
        return timegm(&end);
    }
    std::string ExpiredRevocationList() const override;

  private:
    const std::optional<PemFile> m_revoked;
    SessionCache m_cache;
    const std::unique_ptr<SSL_CTX, Free<SSL_CTX_free>> m_context; // goes before the cache
};

std::string OpenSslContext::ExpiredRevocationList() const
{
    std::string expired;
    if (!m_revoked)
        return expired;
    ForEachList(*m_revoked,
                [&expired](X509_CRL* list)
                {
                    const ASN1_TIME* const end = X509_CRL_get0_nextUpdate(list);
                    if (end == nullptr || X509_cmp_current_time(end) > 0)
                        return;
                    const Bio text(BIO_new(BIO_s_mem()));
                    if (text == nullptr)
                        throw std::bad_alloc();
                    X509_NAME_print_ex(text.get(), X509_CRL_get_issuer(list), 0, XN_FLAG_RFC2253);
                    char* name = nullptr;
                    const long size = BIO_get_mem_data(text.get(), &name);
                    expired.assign(name, static_cast<std::size_t>(size));
                });
    return expired;
}

} // namespace

std::shared_ptr<TlsContext> MakeTlsContext(const TlsFiles& files, std::chrono::seconds sessionTime)
{
    return std::make_shared<OpenSslContext>(files, sessionTime);
}

} // namespace tarno::osa
