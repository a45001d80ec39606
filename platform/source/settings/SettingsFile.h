#pragma once

#include "files/FileText.h"
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
    explicit SettingsFile(std::string path) : m_path(std::move(path)) {}

    // As the file stands now; while it is missing or broken, as it last stood, and standard error says
    // so once for each change of the file. Throws AnalyticsFault if it could never be read.
    std::shared_ptr<SettingsDocument> Current();
    const std::string& Path() const { return m_path; }

  private:
    void Reread() ANALYTICS_REQUIRES(m_lock);
    void Parse(const FileText& file) ANALYTICS_REQUIRES(m_lock);

    const std::string m_path;
    Lock m_lock;
    FileStamp m_stamp ANALYTICS_GUARDED_BY(m_lock);
    bool m_trusted ANALYTICS_GUARDED_BY(m_lock) = false; // an equal stamp means an equal file
    std::string m_text ANALYTICS_GUARDED_BY(m_lock);     // of the last reading, and why there is none
    std::string m_unreadable ANALYTICS_GUARDED_BY(m_lock) = "never read";
    std::string m_failure ANALYTICS_GUARDED_BY(m_lock); // of the last reading; empty if it was good
    std::shared_ptr<SettingsDocument> m_document ANALYTICS_GUARDED_BY(m_lock);
};

} // namespace analytics::platform
