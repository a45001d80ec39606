#include "tls/SessionCache.h"

#include <openssl/ssl.h>

#include <utility>

namespace tarno::osa
{
using analytics::platform::MutexLock;
namespace
{

std::string IdOf(const SSL_SESSION* session)
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
        Of(SSL_get_SSL_CTX(ssl)).Add(session);
        return 1; // The session is the cache's from now on.
    }
    static SSL_SESSION* Get(SSL* ssl, const unsigned char* id, int size, int* copy)
    {
        *copy = 0; // What is given is the caller's.
        return Of(SSL_get_SSL_CTX(ssl))
            .Take({reinterpret_cast<const char*>(id), static_cast<std::size_t>(size)});
    }
    static void Remove(SSL_CTX* context, SSL_SESSION* session) { Of(context).Remove(IdOf(session)); }
};

SessionCache::~SessionCache()
{
    const MutexLock hold(m_lock);
    for (SSL_SESSION* const session : m_sessions)
        SSL_SESSION_free(session);
}

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

std::size_t SessionCache::Size()
{
    const MutexLock hold(m_lock);
    return m_sessions.size();
}

void SessionCache::Add(ssl_session_st* session)
{
    SSL_SESSION* oldest = nullptr;
    {
        const MutexLock hold(m_lock);
        if (m_sessions.size() >= kMost)
        {
            oldest = m_sessions.front();
            m_byId.erase(IdOf(oldest));
            m_sessions.pop_front();
        }
        m_byId[IdOf(session)] = m_sessions.insert(m_sessions.end(), session);
    }
    SSL_SESSION_free(oldest);
}

ssl_session_st* SessionCache::Take(const std::string& id)
{
    const MutexLock hold(m_lock);
    const auto entry = m_byId.find(id);
    if (entry == m_byId.end())
        return nullptr;
    SSL_SESSION* const session = *entry->second;
    if (SSL_SESSION_get_protocol_version(session) < TLS1_3_VERSION)
    {
        SSL_SESSION_up_ref(session);
        return session;
    }
    m_sessions.erase(entry->second);
    m_byId.erase(entry);
    return session;
}

void SessionCache::Remove(const std::string& id)
{
    SSL_SESSION* removed = nullptr;
    {
        const MutexLock hold(m_lock);
        const auto entry = m_byId.find(id);
        if (entry == m_byId.end())
            return;
        removed = *entry->second;
        m_sessions.erase(entry->second);
        m_byId.erase(entry);
    }
    SSL_SESSION_free(removed);
}

} // namespace tarno::osa
