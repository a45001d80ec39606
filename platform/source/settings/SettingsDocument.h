#pragma once

#include "threads/Lock.h"
#include "xml/XmlFile.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace analytics::platform
{

// The settings as they once were read. What a query gave is kept: the second time it costs a look-up.
// The queries are the program's own, so that few of them are ever kept. Any thread.
class SettingsDocument
{
  public:
    explicit SettingsDocument(std::unique_ptr<XmlFile> xml) : m_xml(std::move(xml)) {}

    // Lives as long as this object.
    const std::vector<std::string>& Texts(const std::string& query);
    // True the first time for each query: for what is to be said once.
    bool FirstComplaint(const std::string& query);

  private:
    struct Answer
    {
        std::vector<std::string> texts;
        bool complained = false;
    };
    Answer& Find(const std::string& query) ANALYTICS_REQUIRES(m_lock);

    Lock m_lock;
    const std::unique_ptr<XmlFile> m_xml ANALYTICS_GUARDED_BY(m_lock);
    std::unordered_map<std::string, Answer> m_answers ANALYTICS_GUARDED_BY(m_lock);
};

} // namespace analytics::platform
