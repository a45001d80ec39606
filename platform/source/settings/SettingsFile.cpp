#include "settings/SettingsFile.h"

#include <analytics/Faults.h>

#include "files/StandardError.h"

namespace analytics::platform
{

std::shared_ptr<SettingsDocument> SettingsFile::Current()
{
    const Hold hold(m_lock);
    if (!m_trusted || StampOf(m_path) != m_stamp)
        Reread();
    if (!m_document)
        throw AnalyticsFault(m_failure);
    return m_document;
}

void SettingsFile::Reread()
{
    const FileText file = ReadFile(m_path);
    m_stamp = file.stamp;
    m_trusted = file.Missing() || (file.failure.empty() && Settled(file.stamp));
    if (file.text == m_text && file.failure == m_unreadable)
        return;
    Parse(file);
    m_text = file.text;
    m_unreadable = file.failure;
    if (!m_failure.empty() && m_document)
        Say(m_failure + ". The settings read before stay in force.");
}

void SettingsFile::Parse(const FileText& file)
{
    m_failure.clear();
    if (!file.failure.empty())
    {
        m_failure = m_path + ": the settings document can't be read: " + file.failure;
        return;
    }
    XmlError error;
    if (auto xml = XmlFile::Parse(file.text, error))
        m_document = std::make_shared<SettingsDocument>(std::move(xml));
    else
        m_failure = m_path + ':' + std::to_string(error.line) + ": " + error.reason +
                    "; the settings document has to be well-formed XML";
}

} // namespace analytics::platform
