#include "tls/SessionCache.h"

#include <openssl/ssl.h>

#include <algorithm>
#include <utility>

namespace tarno::osa
{
using analytics::platform::MutexLock;
namespace
{

std::string_view IdOf(const SSL_SESSION* session)
{
    unsigned int size = 0;
    const unsigned char* const id = SSL_SESSION_get_id(session, &size);
    return {reinterpret_cast<const char*>(id), size};
}

} // namespace

// What OpenSSL calls. The cache is the application's data of the context.
struct SessionCache::Callbacks
{
    static SessionCache& Of(const SSL_CTX* context)
    {
        return *static_cast<SessionCache*>(SSL_CTX_get_ex_data(context, 0));
    }
    static int New(SSL* ssl, SSL_SESSION* session)
    {
        Of(SSL_get_SSL_CTX(ssl)).Add(Session(session));
        return 1; // The session is the cache's from now on.
    }
    static SSL_SESSION* Get(SSL* ssl, const unsigned char* id, int size, int* copy)
    {
        *copy = 0; // What is given is the caller's.
        return Of(SSL_get_SSL_CTX(ssl))
            .Resume({reinterpret_cast<const char*>(id), static_cast<std::size_t>(size)});
    }
    static void Remove(SSL_CTX* context, SSL_SESSION* session) { Of(context).Remove(IdOf(session)); }
};

void SessionCache::Free::operator()(ssl_session_st* session) const { SSL_SESSION_free(session); }

void SessionCache::Serve(ssl_ctx_st& context, std::chrono::seconds lifetime)
{
    constexpr unsigned char kContext[] = "video analytics";
    SSL_CTX_set_ex_data(&context, 0, this);
    SSL_CTX_set_session_id_context(&context, kContext, sizeof kContext - 1);
    SSL_CTX_set_session_cache_mode(&context, SSL_SESS_CACHE_SERVER | SSL_SESS_CACHE_NO_INTERNAL);
    SSL_CTX_set_timeout(&context, static_cast<long>(lifetime.count()));
    SSL_CTX_set_num_tickets(&context, 1);
    SSL_CTX_sess_set_new_cb(&context, Callbacks::New);
    SSL_CTX_sess_set_get_cb(&context, Callbacks::Get);
    SSL_CTX_sess_set_remove_cb(&context, Callbacks::Remove);
}

void SessionCache::Add(Session session)
{
    const MutexLock hold(m_lock);
    if (m_sessions.size() >= kMost)
        m_sessions.pop_front();
    m_sessions.push_back(std::move(session));
}

ssl_session_st* SessionCache::Resume(std::string_view id)
{
    const MutexLock hold(m_lock);
    const auto found =
        std::ranges::find(m_sessions, id, [](const Session& each) { return IdOf(each.get()); });
    if (found == m_sessions.end())
        return nullptr;
    if (SSL_SESSION_get_protocol_version(found->get()) < TLS1_3_VERSION)
    {
        SSL_SESSION_up_ref(found->get());
        return found->get();
    }
    SSL_SESSION* const session = found->release();
    m_sessions.erase(found);
    return session;
}

void SessionCache::Remove(std::string_view id)
{
    const MutexLock hold(m_lock);
    std::erase_if(m_sessions, [id](const Session& each) { return IdOf(each.get()) == id; });
}

} // namespace tarno::osa
