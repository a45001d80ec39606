#include <analytics/Settings.h>

#include <analytics/Faults.h>

#include "files/File.h"
#include "files/StandardError.h"
#include "request/Request.h"
#include "settings/Configuration.h"
#include "threads/Mutex.h"
#include "threads/PerPath.h"
#include "xml/Text.h"
#include "xml/XmlFile.h"

#include <filesystem>
#include <unordered_map>
#include <utility>

namespace analytics
{
namespace platform
{
namespace
{
// The settings as they once were read. What a query gave is kept: the second time it costs a look-up. The
// queries are the program's own, so that few of them are ever kept. Any thread.
class SettingsDocument
{
  public:
    explicit SettingsDocument(std::unique_ptr<XmlFile> xml) : m_xml(std::move(xml)) {}

    // Lives as long as this object.
    const std::vector<std::string>& Texts(const std::string& query)
    {
        const MutexLock hold(m_lock);
        return Find(query).texts;
    }
    // True the first time for each query: for what is to be said once.
    bool FirstComplaint(const std::string& query)
    {
        const MutexLock hold(m_lock);
        return !m_named && !std::exchange(Find(query).complained, true);
    }
    void MistakesAreNamed()
    {
        const MutexLock hold(m_lock);
        m_named = true;
    }

  private:
    struct Answer
    {
        std::vector<std::string> texts;
        bool complained = false;
    };
    Answer& Find(const std::string& query) ANALYTICS_REQUIRES(m_lock)
    {
        const auto [place, isNew] = m_answers.try_emplace(query);
        if (isNew)
            for (XmlText& text : m_xml->Texts(query))
                place->second.texts.push_back(std::move(text.text));
        return place->second;
    }

    Mutex m_lock;
    const std::unique_ptr<XmlFile> m_xml ANALYTICS_GUARDED_BY(m_lock);
    std::unordered_map<std::string, Answer> m_answers ANALYTICS_GUARDED_BY(m_lock);
    bool m_named ANALYTICS_GUARDED_BY(m_lock) = false;
};

// The settings file and the last good document that was read from it. Any thread.
class SettingsFile
{
  public:
    explicit SettingsFile(const std::string& path) : m_path(path), m_file(path) {}

    // As the file stands now; while it is missing or broken, as it last stood, and standard error says so
    // once for each change of the file. Throws AnalyticsFault if it could never be read.
    std::shared_ptr<SettingsDocument> Current()
    {
        const FileStamp now = StampOf(m_path); // many threads look at a time
        const MutexLock hold(m_lock);
        if (m_file.Renew(now))
            Parse(m_file.Last());
        if (!m_document)
            throw AnalyticsFault(m_failure);
        return m_document;
    }

  private:
    void Parse(const FileText& file) ANALYTICS_REQUIRES(m_lock)
    {
        m_failure.clear();
        xml::SyntaxError error;
        if (!file.failure.empty())
            m_failure = m_path + ": the settings document can't be read: " + file.failure +
                        "; put one there that the service may read, or name another one with --settings";
        else if (auto xml = XmlFile::Parse(file.text, error))
            m_document = std::make_shared<SettingsDocument>(std::move(xml));
        else
            m_failure = m_path + ':' + std::to_string(error.line) + ": " + error.reason +
                        "; the settings document has to be well-formed XML";
        if (!m_failure.empty() && m_document)
            SayOnce(m_failure + ". The settings read before stay in force.");
    }

    const std::string m_path;
    Mutex m_lock;
    WatchedFile m_file ANALYTICS_GUARDED_BY(m_lock);
    std::string m_failure ANALYTICS_GUARDED_BY(m_lock); // of the last reading; empty if it was good
    std::shared_ptr<SettingsDocument> m_document ANALYTICS_GUARDED_BY(m_lock);
};

Configuration& TheConfiguration()
{
    static Configuration configuration;
    return configuration;
}

PerPath<SettingsFile>& Files()
{
    static PerPath<SettingsFile> files;
    return files;
}

std::shared_ptr<SettingsDocument> CurrentSettings()
{
    thread_local OncePerRequest<SettingsDocument> settings;
    return settings.Get([] { return Files().At(CurrentConfiguration().settingsFile)->Current(); });
}
} // namespace

Configuration::Configuration()
    : settingsFile(INSTALLED_SETTINGS), pluginFolder(INSTALLED_PLUGINS), stateFolder(INSTALLED_STATE)
{
}

const Configuration& CurrentConfiguration() { return TheConfiguration(); }

// Begins anew with the file: what was read of it before is forgotten.
void Configure(const Configuration& configuration)
{
    TheConfiguration() = configuration;
    Files().Renew(configuration.settingsFile)->Current();
}

std::string FileBesideSettings(const std::string& file)
{
    return std::filesystem::path(CurrentConfiguration().settingsFile).parent_path() / file;
}

void SettingsMistakesAreNamed()
{
    Files().At(CurrentConfiguration().settingsFile)->Current()->MistakesAreNamed();
}

void RefreshSettings() { Files().At(CurrentConfiguration().settingsFile)->Current(); }

} // namespace platform

namespace
{
constexpr std::uint32_t kMaxResource = 100;

// A value that is there and can't be used is somebody's slip, which is reported once.
template <class T>
T GetNumber(const std::string& key, T defaultValue)
{
    const auto document = platform::CurrentSettings();
    const auto& texts = document->Texts(key);
    if (texts.empty() || texts.front().empty())
        return defaultValue;
    T number = defaultValue;
    if (xml::ReadInteger(texts.front(), number) != std::errc() && document->FirstComplaint(key))
        platform::Say(platform::CurrentConfiguration().settingsFile + ": the value of " + key + ", \"" +
                      texts.front().substr(0, 40) + "\", isn't a whole number in range; " +
                      std::to_string(defaultValue) + " is used.");
    return number;
}
} // namespace

std::string Settings::GetValue(const std::string& key)
{
    const std::vector<std::string> values = GetValues(key);
    return values.empty() ? std::string() : values.front();
}

int Settings::GetValue(const std::string& key, int defaultValue) { return GetNumber<int>(key, defaultValue); }

std::vector<std::string> Settings::GetValues(const std::string& key)
{
    const auto document = platform::CurrentSettings();
    return document->Texts(key);
}

std::uint32_t Settings::MaxResource() { return GetNumber<std::uint32_t>("//maxResource", kMaxResource); }

std::string Settings::OnvifPrefix() { return "tt"; }
std::string Settings::RulesTag() { return "RuleEngineConfiguration"; }
std::string Settings::EnginePattern() { return "com.varlo.engine."; }

} // namespace analytics
