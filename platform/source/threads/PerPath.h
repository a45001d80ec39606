#pragma once

#include "threads/Mutex.h"

#include <memory>
#include <string>

namespace analytics::platform
{

// The one T that stands for the path in force. It is made when it is first asked for, and anew when
// the path has changed. T is built from the path.
template <class T>
class PerPath
{
  public:
    std::shared_ptr<T> At(const std::string& path)
    {
        const MutexLock hold(m_lock);
        if (!m_value || m_path != path)
            Make(path);
        return m_value;
    }

    // Forgets what the last one knew.
    std::shared_ptr<T> Renew(const std::string& path)
    {
        const MutexLock hold(m_lock);
        Make(path);
        return m_value;
    }

  private:
    void Make(const std::string& path) ANALYTICS_REQUIRES(m_lock)
    {
        m_value = std::make_shared<T>(path);
        m_path = path;
    }

    Mutex m_lock;
    std::string m_path ANALYTICS_GUARDED_BY(m_lock);
    std::shared_ptr<T> m_value ANALYTICS_GUARDED_BY(m_lock);
};

} // namespace analytics::platform
