#include "tls/SessionCache.h"

#include <openssl/ssl.h>

#include <algorithm>
#include <new>
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

// What OpenSSL calls, which no exception may cross: without memory, a client shakes hands anew. The cache is
// the application's data of the context.
struct SessionCache::Callbacks
{
    static SessionCache& Of(const SSL_CTX* context)
    {
        return *static_cast<SessionCache*>(SSL_CTX_get_ex_data(context, 0));
    }
    static int New(SSL* ssl, SSL_SESSION* session)
    {
        try
        {
            Of(SSL_get_SSL_CTX(ssl)).Add(session);
        }
        catch (const std::bad_alloc&)
        {
        }
        return 0; // The session stays OpenSSL's.
    }
    static SSL_SESSION* Get(SSL* ssl, const unsigned char* id, int size, int* copy)
    {
        *copy = 0; // What is given is the caller's.
        try
        {
            return Of(SSL_get_SSL_CTX(ssl))
                .Resume({reinterpret_cast<const char*>(id), static_cast<std::size_t>(size)});
        }
        catch (const std::bad_alloc&)
        {
            return nullptr;
        }
    }
    static void Remove(SSL_CTX* context, SSL_SESSION* session) { Of(context).Remove(IdOf(session)); }
};

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

void SessionCache::Add(ssl_session_st* session)
{
    const int size = i2d_SSL_SESSION(session, nullptr);
    if (size <= 0)
        return;
    Session kept{std::string(IdOf(session)), std::string(static_cast<std::size_t>(size), '\0'),
                 SSL_SESSION_get_protocol_version(session) >= TLS1_3_VERSION};
    auto* end = reinterpret_cast<unsigned char*>(kept.der.data());
    i2d_SSL_SESSION(session, &end);
    const MutexLock hold(m_lock);
    if (m_sessions.size() >= kMost)
        m_sessions.pop_front();
    m_sessions.push_back(std::move(kept));
}

ssl_session_st* SessionCache::Resume(std::string_view id)
{
    std::string der;
    {
        const MutexLock hold(m_lock);
        const auto found = std::ranges::find(m_sessions, id, &Session::id);
        if (found == m_sessions.end())
            return nullptr;
        if (!found->once)
            der = found->der;
        else
        {
            der = std::move(found->der);
            m_sessions.erase(found);
        }
    }
    const auto* begin = reinterpret_cast<const unsigned char*>(der.data());
    return d2i_SSL_SESSION(nullptr, &begin, static_cast<long>(der.size()));
}

void SessionCache::Remove(std::string_view id)
{
    const MutexLock hold(m_lock);
    std::erase_if(m_sessions, [id](const Session& each) { return each.id == id; });
}

} // namespace tarno::osa
