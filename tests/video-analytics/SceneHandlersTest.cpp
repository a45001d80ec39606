// The scene operations from the message to the platform and back, on a scripted platform.

#include "../source/Wire.h"
#include "conversion/SceneAnalyzerScenes.h"

#include <SoapRequest.h>

#include <SceneRequests.h>

#include <analytics/Faults.h>

#include <gmock/gmock.h>

#include <soapH.h>

namespace
{

using scenes::Plain;
using testing::_;
using testing::DoAll;
using testing::HasSubstr;
using testing::Not;
using testing::Return;
using testing::SaveArg;
using testing::SetArgReferee;
using testing::StartsWith;
using testing::Throw;
using wire::Answer;

constexpr char kOk[] = "HTTP/1.1 200 OK\r\n";
constexpr char kId[] = "com.varlo.engine.sceneanalyzer";

class SceneHandlersTest : public scenes::SceneTest
{
  protected:
    ~SceneHandlersTest() override { analyticsapi::SoapRequest::Shutdown(); }
};

std::string Get(int profile)
{
    return Answer("<v:GetProfileScene><profileId>" + std::to_string(profile) +
                  "</profileId></v:GetProfileScene>");
}

// CDATA, so that a scene stands in a test as it is.
std::string Set(int profile, const std::string& scene)
{
    return Answer("<v:SetProfileScene><profileId>" + std::to_string(profile) +
                  "</profileId><scene><![CDATA[" + scene + "]]></scene></v:SetProfileScene>");
}

std::string Replaced(std::string text, const std::string& what, const std::string& by)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size()))
        text.replace(at, what.size(), by);
    return text;
}

// The text of the element `scene` of an answer.
std::string SceneOf(const std::string& answer)
{
    EXPECT_THAT(answer, StartsWith(kOk));
    const std::string start = "<scene>";
    const std::size_t begin = answer.find(start);
    if (begin == std::string::npos)
        return answer.find("<scene/>") == std::string::npos ? "none: " + answer : std::string();
    std::string text = answer.substr(begin + start.size(), answer.find("</scene>") - begin - start.size());
    text = Replaced(Replaced(text, "&lt;", "<"), "&gt;", ">");
    text = Replaced(Replaced(text, "&quot;", "\""), "&#xA;", "\n");
    return Replaced(text, "&amp;", "&");
}

TEST_F(SceneHandlersTest, ProfileWithoutASceneGetsNoAnswerAndNothingElseIsAsked)
{
    EXPECT_CALL(m_platform.profiles, GetEngineConfig(7, std::string(kId), _)).WillOnce(Return(false));
    EXPECT_CALL(m_platform.profiles, GetCameraPreset).Times(0);
    EXPECT_CALL(m_platform.profiles, GetProfileName).Times(0);
    EXPECT_EQ(Get(7), "");
}

TEST_F(SceneHandlersTest, SceneComesWithTheNameAndPresetOfTheProfileAndWithoutADeclaration)
{
    const std::string stored = scenes::File(TEST_DATA "/sceneanalyzer/example/engine.xml");
    testing::InSequence order;
    EXPECT_CALL(m_platform.profiles, GetEngineConfig(3, std::string(kId), testing::IsEmpty()))
        .WillOnce(DoAll(SetArgReferee<2>(stored), Return(true)));
    EXPECT_CALL(m_platform.profiles, GetCameraPreset(3)).WillOnce(Return("Gate & <yard>"));
    EXPECT_CALL(m_platform.profiles, GetProfileName(3)).WillOnce(Return("Night"));
    const std::string scene = SceneOf(Get(3));
    EXPECT_THAT(scene, StartsWith("\n<analyticProfile version=\"2.0\" name=\"Night\">"
                                  "<cameraPreset>Gate &amp; &lt;yard&gt;</cameraPreset>"));
    EXPECT_THAT(scene, Not(HasSubstr("<?xml")));
    EXPECT_THAT(scene, HasSubstr("<excludeZone><name>Exclude 1</name>"));
}

TEST_F(SceneHandlersTest, StoredTextThatDoesNotConvertIsAnEmptyScene)
{
    for (const char* stored : {"", "<broken", "<other/>"})
    {
        EXPECT_CALL(m_platform.profiles, GetEngineConfig)
            .WillOnce(DoAll(SetArgReferee<2>(stored), Return(true)));
        EXPECT_EQ(SceneOf(Get(1)), "");
    }
}

TEST_F(SceneHandlersTest, SceneIsStoredAsTheEngineHasItWithItsNameAndNoPreset)
{
    const std::string sent = scenes::File(TEST_DATA "/sceneanalyzer/calibrated/scene.xml");
    ASSERT_THAT(sent, HasSubstr("<cameraPreset>Overview</cameraPreset>"));
    std::string stored;
    EXPECT_CALL(m_platform.profiles, SetEngineConfig(4, std::string(kId), _,
                                                     std::string("Car park & gate \"north\""), std::string()))
        .WillOnce(DoAll(SaveArg<2>(&stored), Return(true)));
    EXPECT_THAT(
        Set(4, sent),
        HasSubstr("<VideoAnalytics:SetProfileSceneResponse></VideoAnalytics:SetProfileSceneResponse>"));
    EXPECT_EQ(Plain(stored), Plain(scenes::File(TEST_DATA "/sceneanalyzer/calibrated/engine.xml")));
}

TEST_F(SceneHandlersTest, EmptyNameReachesTheManagerAsItIs)
{
    EXPECT_CALL(m_platform.profiles,
                SetEngineConfig(4, _, Not(testing::IsEmpty()), std::string(), std::string()))
        .Times(2)
        .WillRepeatedly(Return(true));
    EXPECT_THAT(Set(4, "<analyticProfile name=\"\"/>"), StartsWith(kOk));
    EXPECT_THAT(Set(4, "<analyticProfile/>"), StartsWith(kOk));
}

TEST_F(SceneHandlersTest, SceneThatCannotBeReadReachesTheManagerAsThreeEmptyTexts)
{
    const std::string none;
    EXPECT_CALL(m_platform.profiles, SetEngineConfig(4, std::string(kId), none, none, none))
        .Times(4)
        .WillRepeatedly(Throw(analytics::ClientFault("unreadable")));
    for (const char* scene : {"", "no markup", "<analyticProfile name='x'", "<behavior/>"})
        EXPECT_THAT(Set(4, scene), HasSubstr("<faultstring>unreadable</faultstring>")) << scene;
}

TEST_F(SceneHandlersTest, ManagerDecidesTheStatusOfASceneThatCannotBeRead)
{
    EXPECT_CALL(m_platform.profiles, SetEngineConfig(_, _, _, _, _))
        .WillOnce(Return(true))
        .WillOnce(Return(false));
    EXPECT_THAT(Set(4, ""), StartsWith(kOk));
    EXPECT_EQ(Set(4, ""), "");
}

TEST_F(SceneHandlersTest, SceneThatTheManagerDoesNotStoreGetsNoAnswer)
{
    EXPECT_CALL(m_platform.profiles, SetEngineConfig(4, _, Not(testing::IsEmpty()), _, _))
        .WillOnce(Return(false));
    EXPECT_EQ(Set(4, "<analyticProfile/>"), "");
}

TEST_F(SceneHandlersTest, DefaultSceneIsThePluginsTextLessItsDeclaration)
{
    EXPECT_EQ(Plain(SceneOf(Answer("<v:GetDefaultScene/>"))), Plain(scenes::Delivered("behavior.xml")));
    std::string& text = m_platform.plugins.front().behaviorDocument;
    text = "<?xml version=\"1.0\"?> no <scene & no markup";
    EXPECT_EQ(SceneOf(Answer("<v:GetDefaultScene/>")), " no <scene & no markup");
    text = "";
    EXPECT_EQ(SceneOf(Answer("<v:GetDefaultScene/>")), "");
    m_platform.plugins.clear();
    EXPECT_EQ(SceneOf(Answer("<v:GetDefaultScene/>")), "");
    EXPECT_EQ(m_platform.managersMade, 0) << "a default has no profile";
}

TEST_F(SceneHandlersTest, FaultsOfThePlatformGoToTheClient)
{
    EXPECT_CALL(m_platform.profiles, GetEngineConfig).WillOnce(Throw(analytics::AnalyticsFault("no store")));
    const std::string answer = Get(1);
    EXPECT_THAT(answer, HasSubstr("<faultstring>no store</faultstring>"));
    EXPECT_THAT(answer, Not(HasSubstr("<scene>")));
    EXPECT_CALL(m_platform.profiles, SetEngineConfig(_, _, _, _, _))
        .WillOnce(Throw(analytics::ClientFault("Profile 9 does not exist")));
    EXPECT_THAT(Set(9, "<analyticProfile/>"),
                HasSubstr("<faultcode>SOAP-ENV:Client</faultcode>"
                          "<faultstring>Profile 9 does not exist</faultstring>"));
}

TEST_F(SceneHandlersTest, RequestsHaveAnEmptySceneUntilTheyAreExecuted)
{
    soap* const context = soap_new1(SOAP_C_UTFSTRING);
    EXPECT_CALL(m_platform.profiles, GetEngineConfig).WillOnce(Return(false));
    analyticsapi::GetProfileSceneRequest get(1, context);
    EXPECT_EQ(get.Scene(), "");
    EXPECT_EQ(get.Execute(), -1);
    analyticsapi::GetDefaultSceneRequest getDefault(context);
    EXPECT_EQ(getDefault.Scene(), "");
    EXPECT_EQ(getDefault.Execute(), 0);
    EXPECT_NE(getDefault.Scene(), "");
    soap_free(context);
}

TEST_F(SceneHandlersTest, NullArgumentsEndTheProcess)
{
    _VideoAnalytics__SetProfileScene request;
    _VideoAnalytics__SetProfileSceneResponse response;
    soap* const context = soap_new1(SOAP_C_UTFSTRING);
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(__VideoAnalytics__SetProfileScene(nullptr, &request, &response), "thesoap != __null");
    EXPECT_DEATH(__VideoAnalytics__SetProfileScene(context, nullptr, &response), "request != __null");
    EXPECT_DEATH(__VideoAnalytics__SetProfileScene(context, &request, nullptr), "response != __null");
    soap_free(context);
}

} // namespace
