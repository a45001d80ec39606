// The scene from one form to the other: golden documents, and what travels beside them.

#include "SceneAnalyzerScenes.h"

#include <ProfileDocConverter.h>
#include <SceneAnalyzerConverter.h>

#include <gmock/gmock.h>

#include <functional>
#include <initializer_list>
#include <memory>

namespace
{

using namespace scenes;
using profile_conversion::Factory;
using profile_conversion::ProfileDocConverter;
using profile_conversion::ProfileParameters;
using profile_conversion::SceneAnalyzerConverter;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char kId[] = "com.varlo.engine.sceneanalyzer";

class SceneAnalyzerConverterTest : public SceneTest
{
  protected:
    std::string Stored(const std::string& scene)
    {
        return SceneAnalyzerConverter().FromVarloToOnvif(scene, m_params);
    }

    ProfileParameters m_params;
};

// The preset in a golden scene, which the platform would report.
std::string PresetOf(const std::string& xml)
{
    std::smatch match;
    if (!std::regex_search(xml, match, std::regex("<cameraPreset>(.*)</cameraPreset>")))
        return {};
    return std::regex_replace(std::regex_replace(match[1].str(), std::regex("&lt;"), "<"), std::regex("&gt;"),
                              ">");
}

// Every one of the files that exists converts to `expected`.
void Check(const std::filesystem::path& folder, std::initializer_list<const char*> files,
           const std::string& expected, const std::function<std::string(const std::string&)>& convert)
{
    for (const char* file : files)
    {
        if (!exists(folder / file))
            continue;
        EXPECT_EQ(Plain(convert(File(folder / file))), Plain(expected)) << file;
    }
}

// A case is a folder: `scene.xml` is what clients get of the stored `engine.xml`. `received.xml`, where it
// exists, is another document of a client that is stored as `engine.xml`, and `stored.xml` is another
// stored one that clients get as `scene.xml`.
TEST_F(SceneAnalyzerConverterTest, GoldenDocumentsInBothDirections)
{
    int cases = 0;
    for (const auto& folder : std::filesystem::directory_iterator(TEST_DATA "/sceneanalyzer"))
    {
        SCOPED_TRACE(folder.path());
        const std::string client = File(folder.path() / "scene.xml");
        const std::string engine = File(folder.path() / "engine.xml");
        const auto stored = [&](const std::string& xml) { return Stored(xml); };
        Check(folder, {"scene.xml", "received.xml"}, engine, stored);
        m_params.CameraPreset(PresetOf(client));
        const auto sent = [&](const std::string& xml)
        { return SceneAnalyzerConverter().FromOnvifToVarlo(xml, m_params); };
        Check(folder, {"engine.xml", "stored.xml"}, client, sent);
        ++cases;
    }
    EXPECT_GE(cases, 7);
}

TEST_F(SceneAnalyzerConverterTest, DeliveredDocumentsSayTheSameAndSetWhatTheModelStartsWith)
{
    EXPECT_EQ(Text(FromClient(Delivered("behavior.xml"))), Text(scene::Config()));
    EXPECT_EQ(Text(FromEngine(Delivered("engine.xml"))), Text(scene::Config()));
    EXPECT_EQ(Plain(Stored(Delivered("behavior.xml"))), Plain(Delivered("engine.xml")));
    EXPECT_EQ(Plain(ToClient(scene::Config())), Plain(Delivered("behavior.xml")));
}

// A scene in which no value is what the plug-in delivers, so that an item without a place would show.
TEST_F(SceneAnalyzerConverterTest, DeliveredEngineDocumentHasAPlaceForEverything)
{
    const std::string received = File(TEST_DATA "/sceneanalyzer/calibrated/scene.xml");
    scene::Config expected = FromClient(received);
    expected.ProfileName("");
    EXPECT_EQ(Text(FromEngine(Stored(received))), Text(expected));
}

TEST_F(SceneAnalyzerConverterTest, ExampleInTheDocumentationIsStoredAndGivenBack)
{
    const std::string page = File(PLATFORM_DATA "/../../docs/scene-document.md");
    const std::string start = "```xml\n";
    const std::size_t begin = page.find(start) + start.size();
    const std::string example = page.substr(begin, page.find("```", begin) - begin);
    const std::string stored = Stored(example);
    m_params.CameraPreset(PresetOf(example));
    EXPECT_EQ(m_params.CameraPreset(), "Overview");
    EXPECT_EQ(Plain(SceneAnalyzerConverter().FromOnvifToVarlo(stored, m_params)), Plain(example));
}

TEST_F(SceneAnalyzerConverterTest, MalformedTextGivesNothingAndLeavesTheParameters)
{
    m_params.ProfileName("name");
    m_params.CameraPreset("preset");
    m_params.Active(true);
    for (const char* text : {"", "<analyticProfile", "<behavior/>", "\xff"})
        EXPECT_EQ(Stored(text), "");
    EXPECT_EQ(m_params.ProfileName(), "name");
    EXPECT_EQ(m_params.CameraPreset(), "preset");
    EXPECT_TRUE(m_params.Active());
    for (const char* text : {"", "<tt:C", "<C/>"})
        EXPECT_EQ(SceneAnalyzerConverter().FromOnvifToVarlo(text, m_params), "");
}

TEST_F(SceneAnalyzerConverterTest, NameComesInAndPresetDoesNot)
{
    m_params.CameraPreset("old");
    m_params.Active(true);
    Stored("<analyticProfile name='New &amp; fine'><cameraPreset>Gate</cameraPreset></analyticProfile>");
    EXPECT_EQ(m_params.ProfileName(), "New & fine");
    EXPECT_EQ(m_params.CameraPreset(), "");
    EXPECT_TRUE(m_params.Active()) << "a scene is neither active nor inactive";
}

TEST_F(SceneAnalyzerConverterTest, NameStandsAlsoIfThereIsNoDefaultConfiguration)
{
    m_platform.plugins.clear();
    EXPECT_EQ(Stored("<analyticProfile name='New'/>"), "");
    EXPECT_EQ(m_params.ProfileName(), "New");
}

TEST_F(SceneAnalyzerConverterTest, NameAndPresetGoOut)
{
    m_params.ProfileName("<Night> & \"fog\"");
    m_params.CameraPreset("Gate & <yard>");
    const std::string xml = SceneAnalyzerConverter().FromOnvifToVarlo(Engine(), m_params);
    EXPECT_THAT(xml, StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
    EXPECT_THAT(xml, HasSubstr("<analyticProfile version=\"2.0\" name=\"&lt;Night> &amp; &quot;fog&quot;\">"
                               "<cameraPreset>Gate &amp; &lt;yard&gt;</cameraPreset>"));
}

TEST_F(SceneAnalyzerConverterTest, OnlyTheExactIdentifierIsAccepted)
{
    EXPECT_TRUE(SceneAnalyzerConverter::CanConvert(kId));
    for (const char* id :
         {"com.varlo.engine.sceneanalyzer2", "com.varlo.engine.sceneanalyze", "com.varlo.engine",
          "COM.VARLO.ENGINE.SCENEANALYZER", "urn:varlo-com:AlgorithmId:SceneAnalyzer:1"})
    {
        EXPECT_FALSE(SceneAnalyzerConverter::CanConvert(id)) << id;
        EXPECT_EQ(std::unique_ptr<ProfileDocConverter>(Factory::CreateConverter(id)), nullptr) << id;
    }
}

TEST_F(SceneAnalyzerConverterTest, FactoryMakesItAndItHasNoAdditionalComponent)
{
    const std::unique_ptr<ProfileDocConverter> converter(Factory::CreateConverter(kId));
    ASSERT_NE(dynamic_cast<SceneAnalyzerConverter*>(converter.get()), nullptr);
    EXPECT_NE(converter->FromVarloToOnvif(Delivered("behavior.xml"), m_params), "");
    std::string id = "id";
    std::string config = "config";
    EXPECT_FALSE(converter->AdditionalComponent(id, config));
    EXPECT_EQ(id + config, "idconfig");
}

} // namespace
