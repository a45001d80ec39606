#pragma once

#include <SceneAnalyzerConfig.h>
#include <SceneAnalyzerConverter.h>

#include <fake-platform/FakePlatform.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>

// Scenes for tests: the delivered plug-in on a scripted platform, and scenes as text that can be compared.
namespace scenes
{

namespace scene = profile_conversion::sceneanalyzer;

inline std::string File(const std::filesystem::path& path)
{
    std::ifstream stream(path);
    EXPECT_TRUE(stream.is_open()) << path;
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline std::string Delivered(const std::string& file)
{
    return File(std::filesystem::path(PLATFORM_DATA) / "plugins" / "com.varlo.engine.sceneanalyzer" / file);
}

// One document as one line: without declaration and without white space between its tags.
inline std::string Plain(const std::string& xml)
{
    static const std::regex declaration("^<\\?xml[^>]*\\?>");
    static const std::regex gaps(">\\s+<");
    static const std::regex ends("^\\s+|\\s+$");
    const std::string body = std::regex_replace(xml, declaration, "");
    return std::regex_replace(std::regex_replace(body, gaps, "><"), ends, "");
}

inline void Print(std::ostream& out, const char* name, const profile_conversion::Point* points,
                  std::size_t count)
{
    out << name;
    for (std::size_t i = 0; i < count; ++i)
        out << " (" << points[i].X() << ", " << points[i].Y() << ")";
    out << "\n";
}

// All of a scene, to compare and to read in a failure.
inline std::string Text(const scene::Config& config)
{
    std::ostringstream out;
    const scene::Calibration& calibration = config.GetCalibration();
    out << "name [" << config.ProfileName() << "] preset [" << config.CameraPreset() << "] numbers "
        << config.SceneType() << " " << config.Background() << " " << config.Tuning() << " "
        << config.Sensitivity() << " calibrated " << calibration.Calibrated() << " height "
        << calibration.PhysicalHeight() << " [" << calibration.PhysicalHeightUnit() << "]\n";
    Print(out, "near left", calibration.ObjectAtNearLeft(), 2);
    Print(out, "near right", calibration.ObjectAtNearRight(), 2);
    Print(out, "distance", calibration.ObjectAtDistance(), 2);
    Print(out, "near width", calibration.NearWidth(), 2);
    Print(out, "far width", calibration.FarWidth(), 2);
    Print(out, "min", config.MinObjectSize(), 2);
    Print(out, "max", config.MaxObjectSize(), 2);
    for (const profile_conversion::Polygon& zone : config.ExcludeZones())
        Print(out, "zone", zone.data(), zone.size());
    return out.str();
}

inline std::string Text(const profile_conversion::Line& line)
{
    std::ostringstream out;
    Print(out, "", line, 2);
    return out.str();
}

inline scene::Config FromClient(const std::string& xml)
{
    scene::Config config;
    EXPECT_TRUE(scene::VarloDoc().DocToConfig(xml, config)) << xml;
    return config;
}

inline scene::Config FromEngine(const std::string& xml)
{
    scene::Config config;
    EXPECT_TRUE(scene::OnvifDoc().DocToConfig(xml, config)) << xml;
    return config;
}

inline std::string ToClient(const scene::Config& config)
{
    std::string xml;
    EXPECT_TRUE(scene::VarloDoc().ConfigToDoc(config, xml));
    return xml;
}

inline std::string ToEngine(const scene::Config& config)
{
    std::string xml;
    EXPECT_TRUE(scene::OnvifDoc().ConfigToDoc(config, xml));
    return xml;
}

// A platform with the scene analyzer as delivered.
class SceneTest : public testing::Test
{
  protected:
    SceneTest()
    {
        fake::Plugin plugin;
        plugin.fields.type = "engine";
        plugin.fields.id = "com.varlo.engine.sceneanalyzer";
        plugin.fields.alias = "urn:varlo-com:AlgorithmId:SceneAnalyzer:1";
        plugin.engineDocument = Delivered("engine.xml");
        plugin.behaviorDocument = Delivered("behavior.xml");
        m_platform.plugins.push_back(plugin);
    }

    std::string& Engine() { return m_platform.plugins.front().engineDocument; }

    fake::Platform m_platform;
};

} // namespace scenes
