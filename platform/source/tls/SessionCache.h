#pragma once

#include "threads/Mutex.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

struct ssl_ctx_st;
struct ssl_session_st;

namespace tarno::osa
{

// The TLS sessions that clients may go on with. A ticket is a number that stands for nothing outside of this
// memory: there is no key that could be stolen, and what is forgotten here can't be resumed. In TLS 1.3 a
// ticket counts once, and each resumption agrees on new keys. Any thread.
class SessionCache
{
  public:
    // The oldest makes room. Each is kept in its DER form, some 1 KiB with a client's certificate: an object
    // of OpenSSL takes ten times that.
    static constexpr std::size_t kMost = 256;

    // Makes the sessions of `context` resumable for `lifetime`. The cache outlives the context.
    void Serve(ssl_ctx_st& context, std::chrono::seconds lifetime);

  private:
    struct Callbacks;
    struct Session
    {
        std::string id;
        std::string der;
        bool once; // TLS 1.3
    };

    void Add(ssl_session_st* session);
    // The caller's own; null if there is none.
    ssl_session_st* Resume(std::string_view id);
    void Remove(std::string_view id);

    analytics::platform::Mutex m_lock;
    std::deque<Session> m_sessions ANALYTICS_GUARDED_BY(m_lock); // the oldest first
};

} // namespace tarno::osa
