#include "tls/OpenSslSession.h"

#include "tls/SocketBio.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <new>

namespace tarno::osa
{

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
