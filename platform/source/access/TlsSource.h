#pragma once

#include "access/AccessSettings.h"
#include "access/Tls.h"
#include "files/File.h"
#include "threads/Mutex.h"

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tarno::osa
{

// The TLS context of an endpoint. When one of its files, the users or the roles change, it is made again,
// which ends all sessions. While the files can't be used, the last good context stays, and standard error
// says so once. Any thread.
class TlsSource
{
  public:
    // Throws AccessFault.
    explicit TlsSource(const AccessSettings& settings);

    std::shared_ptr<TlsContext> Current();
    // To be called regularly; reports once a day what expires soon or has expired.
    void Warn(std::chrono::system_clock::time_point now);

  private:
    using WatchedFile = analytics::platform::WatchedFile;

    std::vector<std::string> Renew() ANALYTICS_REQUIRES(m_lock);
    TlsFiles Files() const ANALYTICS_REQUIRES(m_lock);
    std::shared_ptr<TlsContext> Make() ANALYTICS_REQUIRES(m_lock);

    const AccessSettings m_settings;
    analytics::platform::Mutex m_lock;
    std::map<std::string, WatchedFile>
        m_files ANALYTICS_GUARDED_BY(m_lock); // that the settings name, by path
    std::string m_roles ANALYTICS_GUARDED_BY(m_lock);
    std::shared_ptr<TlsContext> m_context ANALYTICS_GUARDED_BY(m_lock);
    std::chrono::system_clock::time_point m_warned ANALYTICS_GUARDED_BY(m_lock);
};

} // namespace tarno::osa
