#pragma once

#include "threads/Mutex.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
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
    // The oldest makes room. Some 10 KiB each with a client's certificate.
    static constexpr std::size_t kMost = 256;

    // Makes the sessions of `context` resumable for `lifetime`. The cache outlives the context.
    void Serve(ssl_ctx_st& context, std::chrono::seconds lifetime);

  private:
    struct Callbacks;
    struct Free
    {
        void operator()(ssl_session_st* session) const;
    };
    using Session = std::unique_ptr<ssl_session_st, Free>;

    void Add(Session session);
    // A reference of the caller's own; null if there is none.
    ssl_session_st* Resume(std::string_view id);
    void Remove(std::string_view id);

    analytics::platform::Mutex m_lock;
    std::deque<Session> m_sessions ANALYTICS_GUARDED_BY(m_lock); // the oldest first
};

} // namespace tarno::osa
