#pragma once

#include "files/WatchedFile.h"
#include "settings/SettingsDocument.h"
#include "threads/Lock.h"

#include <memory>
#include <string>

namespace analytics::platform
{

// The settings file and the last good document that was read from it. Any thread.
class SettingsFile
{
  public:
    explicit SettingsFile(const std::string& path) : m_path(path), m_file(path) {}

    // As the file stands now; while it is missing or broken, as it last stood, and standard error says
    // so once for each change of the file. Throws AnalyticsFault if it could never be read.
    std::shared_ptr<SettingsDocument> Current();
    const std::string& Path() const { return m_path; }

  private:
    void Parse(const FileText& file) ANALYTICS_REQUIRES(m_lock);

    const std::string m_path;
    Lock m_lock;
    WatchedFile m_file ANALYTICS_GUARDED_BY(m_lock);
    std::string m_failure ANALYTICS_GUARDED_BY(m_lock); // of the last reading; empty if it was good
    std::shared_ptr<SettingsDocument> m_document ANALYTICS_GUARDED_BY(m_lock);
};

} // namespace analytics::platform
