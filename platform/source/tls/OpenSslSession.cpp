#include "tls/OpenSslSession.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdint>
#include <new>

namespace tarno::osa
{
namespace
{

int SocketOf(BIO* bio) { return static_cast<int>(reinterpret_cast<std::intptr_t>(BIO_get_data(bio))); }

bool MustWait() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

int Read(BIO* bio, char* room, int size)
{
    BIO_clear_retry_flags(bio);
    const ssize_t count = recv(SocketOf(bio), room, static_cast<std::size_t>(size), 0);
    if (count < 0 && MustWait())
        BIO_set_retry_read(bio);
    if (count == 0)
        BIO_set_flags(bio, BIO_FLAGS_IN_EOF);
    return static_cast<int>(count);
}

int Write(BIO* bio, const char* bytes, int size)
{
    BIO_clear_retry_flags(bio);
    const ssize_t count = send(SocketOf(bio), bytes, static_cast<std::size_t>(size), MSG_NOSIGNAL);
    if (count < 0 && MustWait())
        BIO_set_retry_write(bio);
    return static_cast<int>(count);
}

long Control(BIO* bio, int command, long /*number*/, void* /*data*/)
{
    if (command == BIO_CTRL_EOF)
        return BIO_test_flags(bio, BIO_FLAGS_IN_EOF) != 0 ? 1 : 0;
    return command == BIO_CTRL_FLUSH ? 1 : 0;
}

struct FreeMethod
{
    void operator()(BIO_METHOD* method) const { BIO_meth_free(method); }
};

BIO_METHOD* SocketMethod()
{
    static const std::unique_ptr<BIO_METHOD, FreeMethod> method = []
    {
        std::unique_ptr<BIO_METHOD, FreeMethod> made(
            BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK, "socket"));
        if (made == nullptr)
            throw std::bad_alloc();
        BIO_meth_set_read(made.get(), Read);
        BIO_meth_set_write(made.get(), Write);
        BIO_meth_set_ctrl(made.get(), Control);
        return made;
    }();
    return method.get();
}

// OpenSSL's way to a socket that doesn't block. Its own would end the process with SIGPIPE when the peer is
// gone. The socket isn't owned.
BIO* NewSocketBio(int socket)
{
    BIO* const bio = BIO_new(SocketMethod());
    if (bio == nullptr)
        throw std::bad_alloc();
    BIO_set_data(bio, reinterpret_cast<void*>(static_cast<std::intptr_t>(socket)));
    BIO_set_init(bio, 1);
    return bio;
}

} // namespace

void OpenSslSession::Free::operator()(ssl_st* session) const { SSL_free(session); }

OpenSslSession::OpenSslSession(ssl_ctx_st& context, int socket) : m_session(SSL_new(&context))
{
    if (m_session == nullptr)
        throw std::bad_alloc();
    BIO* const bio = NewSocketBio(socket);
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

StreamResult OpenSslSession::Handshake()
{
    ERR_clear_error();
    const StreamResult result = Outcome(SSL_do_handshake(m_session.get()));
    m_sound = result.state == StreamState::Done;
    return result;
}

StreamResult OpenSslSession::Read(std::span<char> room)
{
    ERR_clear_error();
    return Outcome(SSL_read(m_session.get(), room.data(), static_cast<int>(room.size())));
}

StreamResult OpenSslSession::Write(std::string_view bytes)
{
    constexpr std::size_t kRecord = SSL3_RT_MAX_PLAIN_LENGTH;
    ERR_clear_error();
    return Outcome(SSL_write(m_session.get(), bytes.data(),
                             static_cast<int>(bytes.size() < kRecord ? bytes.size() : kRecord)));
}

bool OpenSslSession::Begun() const { return BIO_number_read(SSL_get_rbio(m_session.get())) > 0; }

bool OpenSslSession::Resumed() const { return SSL_session_reused(m_session.get()) == 1; }

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

void OpenSslSession::End()
{
    if (!m_sound)
        return;
    ERR_clear_error();
    SSL_shutdown(m_session.get());
    ERR_clear_error();
}

} // namespace tarno::osa
