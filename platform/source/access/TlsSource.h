#pragma once

#include "files/WatchedFile.h"
#include "threads/Lock.h"

#include <memory>
#include <optional>
#include <string>

struct ssl_ctx_st;

namespace tarno::osa
{

// The TLS context of an endpoint, made anew when one of its files has changed. While they can't be used,
// the last good one stays, and standard error says so once. Any thread.
class TlsSource
{
  public:
    // An empty `authority` is none. Throws AccessFault.
    TlsSource(const std::string& certificate, const std::string& privateKey, const std::string& authority);

    std::shared_ptr<ssl_ctx_st> Current();

  private:
    std::shared_ptr<ssl_ctx_st> Make() const ANALYTICS_REQUIRES(m_lock);

    analytics::platform::Lock m_lock;
    analytics::platform::WatchedFile m_certificate ANALYTICS_GUARDED_BY(m_lock);
    analytics::platform::WatchedFile m_privateKey ANALYTICS_GUARDED_BY(m_lock);
    std::optional<analytics::platform::WatchedFile> m_authority ANALYTICS_GUARDED_BY(m_lock);
    std::shared_ptr<ssl_ctx_st> m_context ANALYTICS_GUARDED_BY(m_lock);
};

} // namespace tarno::osa
