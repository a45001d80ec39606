#include "settings/SettingsDocument.h"

#include <utility>

namespace analytics::platform
{

SettingsDocument::Answer& SettingsDocument::Find(const std::string& query)
{
    const auto found = m_answers.find(query);
    if (found != m_answers.end())
        return found->second;
    Answer answer;
    for (XmlText& text : m_xml->Texts(query))
        answer.texts.push_back(std::move(text.text));
    return m_answers.emplace(query, std::move(answer)).first->second;
}

const std::vector<std::string>& SettingsDocument::Texts(const std::string& query)
{
    const Hold hold(m_lock);
    return Find(query).texts;
}

bool SettingsDocument::FirstComplaint(const std::string& query)
{
    const Hold hold(m_lock);
    return !std::exchange(Find(query).complained, true);
}

} // namespace analytics::platform
