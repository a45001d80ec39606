#include "Connection.h"

#include "Explanation.h"
#include "Failure.h"
#include "TlsTrouble.h"

#include <VideoAnalytics.nsmap>

#include <arpa/inet.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>
#include <string_view>
#include <utility>

namespace client
{
namespace
{

// A document of the service has some megabytes at most; an answer of any size would fill the memory.
constexpr ULONG64 kLongestAnswer = 64 << 20;
constexpr std::size_t kLongestHead = 64 << 10;
// A wait may end a little before its time.
constexpr std::chrono::milliseconds kTolerance(20);

[[noreturn]] void RefuseFile(const std::string& what, const std::string& file)
{
    const char* const known = ERR_reason_error_string(ERR_peek_last_error());
    ERR_clear_error();
    std::string reason = known == nullptr ? "it holds none" : known;
    if (access(file.c_str(), R_OK) != 0)
        reason = std::strerror(errno);
    throw Failure(Exit::Document, "The " + what + " can't be used from " + file + ": " + reason +
                                      ". It has to be a readable file in PEM form");
}

void TakeCertificate(SSL_CTX* context, const Access& access)
{
    if (access.certificate.empty())
        return;
    if (SSL_CTX_use_certificate_chain_file(context, access.certificate.c_str()) != 1)
        RefuseFile("certificate", access.certificate);
    const std::string& key = access.key.empty() ? access.certificate : access.key;
    if (SSL_CTX_use_PrivateKey_file(context, key.c_str(), SSL_FILETYPE_PEM) != 1)
        RefuseFile("key of the certificate", key);
}

// Of the system's authorities only the one that is asked for is read, by the hash of its name: all of
// them take longer than the exchange.
void TrustSystem(SSL_CTX* context)
{
    SSL_CTX_set_default_verify_dir(context);
    if (std::getenv(X509_get_default_cert_file_env()) != nullptr)
        SSL_CTX_set_default_verify_file(context);
}

// Lists of revoked certificates, if there are any among the authorities, count.
void MindRevocations(SSL_CTX* context)
{
    const STACK_OF(X509_OBJECT)* const known = X509_STORE_get0_objects(SSL_CTX_get_cert_store(context));
    for (int i = 0; i < sk_X509_OBJECT_num(known); ++i)
        if (X509_OBJECT_get_type(sk_X509_OBJECT_value(known, i)) == X509_LU_CRL)
            X509_VERIFY_PARAM_set_flags(SSL_CTX_get0_param(context), X509_V_FLAG_CRL_CHECK);
}

} // namespace

Connection::Connection(const Access& access, std::optional<Clock::time_point> deadline)
    : m_access(access), m_deadline(deadline)
{
    GuardPassword(access);
    soap_init2(&m_soap, SOAP_C_UTFSTRING | SOAP_XML_TREE, SOAP_C_UTFSTRING);
    m_soap.recv_maxlength = kLongestAnswer;
    m_soap.socket_flags = MSG_NOSIGNAL;
    m_soap.user = this;
    m_receive = std::exchange(m_soap.frecv, Receive);
    m_send = std::exchange(m_soap.fsend, Send);
    m_parseField = std::exchange(m_soap.fparsehdr, TakeField);
    try
    {
        if (m_access.url.compare(0, 8, "https://") == 0)
            UseTls();
    }
    catch (...)
    {
        Clear();
        soap_done(&m_soap);
        throw;
    }
}

Connection::~Connection()
{
    Clear();
    SSL_SESSION_free(std::exchange(m_soap.session, nullptr));
    soap_done(&m_soap);
}

void Connection::Clear()
{
    soap_destroy(&m_soap);
    soap_end(&m_soap);
}

void Connection::UseTls()
{
    static std::once_flag once;
    std::call_once(once, [] { soap_ssl_init(); });
    // The runtime compares names only; OpenSSL itself also accepts a camera's address in its
    // certificate as well.
    constexpr unsigned short kFlags = SOAP_SSL_REQUIRE_SERVER_AUTHENTICATION | SOAP_SSL_SKIP_HOST_CHECK |
                                      SOAP_SSL_NO_DEFAULT_CA_PATH | SOAP_TLSv1_2 | SOAP_TLSv1_3;
    const char* const authorities = m_access.authorities.empty() ? nullptr : m_access.authorities.c_str();
    if (soap_ssl_client_context(&m_soap, kFlags, nullptr, nullptr, authorities, nullptr, nullptr) != SOAP_OK)
        RefuseFile("certificates of authorities", m_access.authorities);
    if (authorities == nullptr)
        TrustSystem(m_soap.ctx);
    MindRevocations(m_soap.ctx);
    RememberTrouble(m_soap.ctx);
    SSL_CTX_clear_options(m_soap.ctx, SSL_OP_NO_TICKET);
    SSL_CTX_set_session_cache_mode(m_soap.ctx, SSL_SESS_CACHE_CLIENT | SSL_SESS_CACHE_NO_INTERNAL);
    SSL_CTX_set_app_data(m_soap.ctx, this);
    SSL_CTX_sess_set_new_cb(m_soap.ctx, Keep);
    m_soap.fsslverify = RememberCertificate;
    TakeCertificate(m_soap.ctx, m_access);
    X509_VERIFY_PARAM* const expected = SSL_CTX_get0_param(m_soap.ctx);
    const std::string host = HostOf(m_access.url);
    if (X509_VERIFY_PARAM_set1_ip_asc(expected, host.c_str()) != 1)
        X509_VERIFY_PARAM_set1_host(expected, host.c_str(), host.size());
}

int Connection::Keep(SSL* connection, SSL_SESSION* session)
{
    soap& context = static_cast<Connection*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(connection)))->m_soap;
    // The runtime offers what it holds to the same host and port, and gives it up.
    SSL_SESSION_free(std::exchange(context.session, session));
    std::snprintf(context.session_host, sizeof context.session_host, "%s", context.host);
    context.session_port = context.port;
    return 1;
}

int Connection::Left() const
{
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(m_end - Clock::now()).count();
    // Negative numbers are microseconds to the runtime.
    return -static_cast<int>(std::clamp<long long>(left, 0, std::numeric_limits<int>::max()));
}

std::size_t Connection::Receive(soap* context, char* buffer, std::size_t size)
{
    auto* const self = static_cast<Connection*>(context->user);
    context->recv_timeout = self->Left();
    if (context->recv_timeout == 0 || self->m_receivable == 0)
        return 0;
    const std::size_t received = self->m_receive(context, buffer, std::min(size, self->m_receivable));
    self->m_receivable -= std::min(received, self->m_receivable);
    return received;
}

int Connection::Send(soap* context, const char* data, std::size_t size)
{
    const auto* const self = static_cast<const Connection*>(context->user);
    context->send_timeout = self->Left();
    const int result = context->send_timeout == 0 ? SOAP_EOF : self->m_send(context, data, size);
    // Why the service has closed the connection may stand in what it sent before: a certificate of ours is
    // refused once the handshake is over on our side.
    if (char nothing = 0; result != SOAP_OK && context->ssl != nullptr)
        SSL_peek(context->ssl, &nothing, 1);
    return result;
}

bool Connection::IgnoringCase::operator()(const std::string& one, const std::string& other) const
{
    return strcasecmp(one.c_str(), other.c_str()) < 0;
}

int Connection::TakeField(soap* context, const char* name, const char* value)
{
    constexpr std::string_view kOurs = "Varlo-Analytics-";
    auto* const self = static_cast<Connection*>(context->user);
    if (strncasecmp(name, kOurs.data(), kOurs.size()) == 0)
        self->m_fields.insert_or_assign(name, value);
    return self->m_parseField(context, name, value);
}

std::string Connection::Field(const std::string& name) const
{
    const auto field = m_fields.find(name);
    return field == m_fields.end() ? "" : field->second;
}

void Connection::Begin()
{
    Clear();
    m_fields.clear();
    m_receivable = std::numeric_limits<std::size_t>::max();
    m_end = Clock::now() + m_access.timeout;
    if (m_deadline)
        m_end = std::min(m_end, *m_deadline);
    const int limit = Left();
    if (limit == 0)
        throw Failure(Exit::Unreachable, TooSlow(m_access.url));
    for (int* timeout : {&m_soap.connect_timeout, &m_soap.send_timeout, &m_soap.recv_timeout})
        *timeout = limit;
    if (!m_access.user.empty())
    {
        m_soap.userid = m_access.user.c_str();
        m_soap.passwd = m_access.password.c_str();
    }
}

Connection::Fetched Connection::Get(std::size_t most)
{
    Begin();
    m_receivable = most + kLongestHead;
    Fetched fetched;
    if (soap_GET(&m_soap, m_access.url.c_str(), nullptr) != SOAP_OK || soap_begin_recv(&m_soap) != SOAP_OK)
    {
        if (m_soap.error < 301 || m_soap.error > 308)
            Fail();
        fetched.location = m_soap.endpoint;
        soap_closesock(&m_soap);
        return fetched;
    }
    std::size_t size = 0;
    if (const char* const body = soap_http_get_body(&m_soap, &size))
        fetched.body.assign(body, size);
    else
        Fail();
    if (size > most)
        throw Failure(Exit::Unreachable, "it is larger than " + std::to_string(most >> 20) + " MiB");
    soap_end_recv(&m_soap);
    soap_closesock(&m_soap);
    return fetched;
}

void Connection::Fail()
{
    const bool timeIsUp = Clock::now() + kTolerance >= m_end;
    const Cause cause = Explain(m_soap, m_access, timeIsUp);
    soap_closesock(&m_soap);
    if (cause.kind == Cause::NoAnswer)
        throw NoAnswer(cause.sentence);
    throw Failure(cause.kind == Cause::Fault ? Exit::Refused : Exit::Unreachable, cause.sentence);
}

} // namespace client
