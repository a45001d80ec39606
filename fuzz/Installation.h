#pragma once

#include <analytics/Platform.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include <unistd.h>

namespace fuzzing
{

// The delivered settings and plug-ins behind the platform's classes, and a temporary folder of this
// process, which ends with it.
class Installation
{
  public:
    Installation()
    {
        std::string pattern = std::filesystem::temp_directory_path() / "fuzz-XXXXXX";
        m_folder = mkdtemp(pattern.data());
        configuration.settingsFile = PLATFORM_DATA "/settings.xml";
        configuration.pluginFolder = PLATFORM_DATA "/plugins";
        configuration.stateFolder = Path("state");
        Use();
    }
    ~Installation()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;

    std::string Path(const std::string& name) const { return m_folder / name; }
    // Has the configuration take effect. Throws AnalyticsFault if its settings can't be read.
    void Use() const { analytics::platform::Configure(configuration); }

    analytics::platform::Configuration configuration;

  private:
    std::filesystem::path m_folder;
};

} // namespace fuzzing
