#include <analytics/Settings.h>

#include "files/StandardError.h"
#include "settings/SettingsSource.h"
#include "xml/Text.h"

namespace analytics
{
namespace
{
using platform::CurrentSettings;
using platform::CurrentSettingsFile;

constexpr std::uint32_t kMaxResource = 100;

// A value that is there and can't be taken is a slip of whoever wrote it; who is told once.
template <class T>
T GetNumber(const std::string& key, T defaultValue)
{
    const auto document = CurrentSettings();
    const auto& texts = document->Texts(key);
    if (texts.empty() || texts.front().empty())
        return defaultValue;
    T number = defaultValue;
    if (xml::ReadInteger(texts.front(), number) != std::errc() && document->FirstComplaint(key))
        platform::Say(CurrentSettingsFile()->Path() + ": the value of " + key + ", \"" +
                      texts.front().substr(0, 40) + "\", is no whole number in range; " +
                      std::to_string(defaultValue) + " is used.");
    return number;
}
} // namespace

std::string Settings::GetValue(const std::string& key)
{
    const auto document = CurrentSettings();
    const auto& texts = document->Texts(key);
    return texts.empty() ? std::string() : texts.front();
}

int Settings::GetValue(const std::string& key, int defaultValue) { return GetNumber<int>(key, defaultValue); }

std::vector<std::string> Settings::GetValues(const std::string& key)
{
    const auto document = CurrentSettings();
    return document->Texts(key);
}

std::uint32_t Settings::MaxResource() { return GetNumber<std::uint32_t>("//maxResource", kMaxResource); }

std::string Settings::OnvifPrefix() { return "tt"; }
std::string Settings::RulesTag() { return "RuleEngineConfiguration"; }
std::string Settings::EnginePattern() { return "com.varlo.engine."; }

} // namespace analytics
