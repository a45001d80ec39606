#include "settings/SettingsFile.h"

#include <analytics/Faults.h>

#include "files/StandardError.h"

namespace analytics::platform
{

std::shared_ptr<SettingsDocument> SettingsFile::Current()
{
    const Hold hold(m_lock);
    if (m_file.Renew())
        Parse(m_file.Last());
    if (!m_document)
        throw AnalyticsFault(m_failure);
    return m_document;
}

void SettingsFile::Parse(const FileText& file)
{
    m_failure.clear();
    xml::SyntaxError error;
    if (!file.failure.empty())
        m_failure = m_path + ": the settings document can't be read: " + file.failure;
    else if (auto xml = XmlFile::Parse(file.text, error))
        m_document = std::make_shared<SettingsDocument>(std::move(xml));
    else
        m_failure = m_path + ':' + std::to_string(error.line) + ": " + error.reason +
                    "; the settings document has to be well-formed XML";
    if (!m_failure.empty() && m_document)
        Say(m_failure + ". The settings read before stay in force.");
}

} // namespace analytics::platform
