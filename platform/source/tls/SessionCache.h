#pragma once

#include "threads/Mutex.h"

#include <chrono>
#include <cstddef>
#include <list>
#include <string>
#include <unordered_map>

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
    static constexpr std::size_t kMost =
        256; // the oldest makes room; some 10 KiB each with a client's certificate

    SessionCache() = default;
    ~SessionCache();
    SessionCache(const SessionCache&) = delete;
    SessionCache& operator=(const SessionCache&) = delete;

    // Makes the sessions of `context` resumable for `lifetime`. The cache outlives the context.
    void Serve(ssl_ctx_st& context, std::chrono::seconds lifetime);
    std::size_t Size();

  private:
    struct Callbacks;

    void Add(ssl_session_st* session); // takes it over
    ssl_session_st* Take(const std::string& id);
    void Remove(const std::string& id);

    analytics::platform::Mutex m_lock;
    std::list<ssl_session_st*> m_sessions ANALYTICS_GUARDED_BY(m_lock); // the oldest first
    std::unordered_map<std::string, std::list<ssl_session_st*>::iterator> m_byId ANALYTICS_GUARDED_BY(m_lock);
};

} // namespace tarno::osa
