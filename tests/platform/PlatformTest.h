#pragma once

#include <analytics/Platform.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

// A test with a settings file, a plug-in folder and a state folder of its own, in a temporary folder.
class PlatformTest : public ::testing::Test
{
  protected:
    PlatformTest()
    {
        std::string pattern = std::filesystem::temp_directory_path() / "platform-test-XXXXXX";
        m_folder = mkdtemp(pattern.data());
        m_configuration.settingsFile = m_folder / "settings.xml";
        m_configuration.pluginFolder = m_folder / "plugins";
        m_configuration.stateFolder = m_folder / "state";
        std::filesystem::create_directory(m_folder / "plugins");
        Write("settings.xml", "<settings/>");
        Configure();
    }
    ~PlatformTest() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

    void Configure() { analytics::platform::Configure(m_configuration); }
    std::string Path(const std::string& name) const { return m_folder / name; }

    // Writes in place; folders are made.
    void Write(const std::string& name, const std::string& text)
    {
        std::filesystem::create_directories((m_folder / name).parent_path());
        std::ofstream(m_folder / name, std::ios::binary) << text;
    }
    // As an editor does: a new file takes the old one's place.
    void Replace(const std::string& name, const std::string& text)
    {
        Write(name + ".new", text);
        std::filesystem::rename(Path(name + ".new"), Path(name));
    }

    std::filesystem::path m_folder;
    analytics::platform::Configuration m_configuration;
};

// What `action` writes to standard error.
inline std::string ErrorsOf(const std::function<void()>& action)
{
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

// The text of the fault of type T that `action` throws; a remark if it throws none.
template <class T>
std::string FaultOf(const std::function<void()>& action)
{
    try
    {
        action();
    }
    catch (const T& fault)
    {
        return fault.what();
    }
    return "(no fault)";
}
