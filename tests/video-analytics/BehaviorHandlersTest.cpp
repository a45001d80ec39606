// The behavior configuration operations from the message to the platform and back: real converters on a
// scripted platform.

#include "../source/Wire.h"

#include <SoapRequest.h>

#include <fake-platform/FakePlatform.h>

#include <analytics/Faults.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

using testing::_;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Return;
using testing::StartsWith;
using testing::Throw;
using wire::Answer;

constexpr char kOk[] = "HTTP/1.1 200 OK\r\n";
constexpr char kUnsupported[] =
    "<faultcode>SOAP-ENV:Client</faultcode><faultstring>Unsupported behavior Id</faultstring>";
constexpr char kId[] = "com.varlo.rule.loiteringdetection";
constexpr char kUrn[] = "urn:varlo-com:AlgorithmId:LoiteringDetection:1";
constexpr char kRules[] =
    "<tt:R xmlns:tt=\"http://www.onvif.org/ver10/schema\"><tt:RuleEngineConfiguration/></tt:R>";
constexpr char kBare[] = "com.varlo.rule.bare"; // a plug-in that no converter knows

// A behavior with settings in an engine.
constexpr char kMotion[] = "com.varlo.rule.directionalmotion";
constexpr char kMotionUrn[] = "urn:varlo-com:AlgorithmId:DirectionalMotion:1";
constexpr char kEngine[] = "com.varlo.engine.directionalmotion";
constexpr char kModule[] =
    "<tt:R xmlns:tt=\"urn:t\"><tt:AnalyticsModule Type=\"com.varlo.engine.directionalmotion\"><tt:Parameters>"
    "<tt:SimpleItem Name=\"Sensitivity\" Value=\"5\"/></tt:Parameters></tt:AnalyticsModule></tt:R>";

std::string Escaped(const std::string& text)
{
    std::string result;
    for (const char c : text)
        result += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
    return result;
}

std::string Behavior(const std::string& attributes, const std::string& id = kUrn)
{
    return "<behavior id=\"" + id + "\" " + attributes +
           "><rois><roi><name>Gate</name></roi></rois></behavior>";
}

class BehaviorHandlersTest : public testing::Test
{
  protected:
    BehaviorHandlersTest()
    {
        Install(kId, kUrn, "rule", kRules, "<?xml version=\"1.0\"?><behavior id=\"x\"/>");
        Install(kBare, "urn:bare", "rule", "", "");
        Install("com.varlo.engine.sceneanalyzer", "urn:scene", "engine", "", "");
        Install(kMotion, kMotionUrn, "rule", kRules, "");
        m_platform.plugins.back().fields.dependencies = {"com.varlo.source.camera", kEngine};
        Install(kEngine, "urn:engine", "engine", kModule, "");
    }
    ~BehaviorHandlersTest() override { analyticsapi::SoapRequest::Shutdown(); }

    void Install(const std::string& id, const std::string& alias, const std::string& type,
                 const std::string& engineDocument, const std::string& behaviorDocument)
    {
        analytics::ManifestFields fields;
        fields.id = id;
        fields.alias = alias;
        fields.type = type;
        m_platform.plugins.push_back({fields, engineDocument, behaviorDocument});
    }

    fake::Plugin& Of(const std::string& id)
    {
        return *std::find_if(m_platform.plugins.begin(), m_platform.plugins.end(),
                             [&](const fake::Plugin& plugin) { return plugin.fields.id == id; });
    }

    static std::string Set(const std::string& id, const std::string& config)
    {
        return Answer("<v:SetProfileBehavior><profileId>4</profileId><behaviorId>" + id +
                      "</behaviorId><config>" + Escaped(config) + "</config></v:SetProfileBehavior>");
    }

    static std::string Ask(const std::string& operation, const std::string& id)
    {
        return Answer("<v:" + operation + "><profileId>4</profileId><behaviorId>" + id +
                      "</behaviorId></v:" + operation + ">");
    }

    fake::Platform m_platform;
};

TEST_F(BehaviorHandlersTest, UnknownIdentifiersAreFaultsAndReachNoManager)
{
    EXPECT_CALL(m_platform.profiles, GetConfig).Times(0);
    EXPECT_CALL(m_platform.profiles, DeleteRule).Times(0);
    EXPECT_CALL(m_platform.profiles, SetRuleConfig).Times(0);
    for (const char* id : {"urn:varlo-com:AlgorithmId:Nothing:1", ""})
    {
        for (const char* operation :
             {"GetProfileBehavior", "DeleteProfileBehavior", "GetDefaultConfiguration"})
            EXPECT_THAT(Ask(operation, id), HasSubstr(kUnsupported)) << operation;
        EXPECT_THAT(Set(id, Behavior("")), HasSubstr(kUnsupported));
    }
    EXPECT_EQ(m_platform.managersMade, 0);
}

TEST_F(BehaviorHandlersTest, EmptyConfigIsRefusedBeforeTheIdentifierIsLookedAt)
{
    for (const char* id : {"unknown", kUrn})
        EXPECT_THAT(Set(id, ""), HasSubstr("<faultcode>SOAP-ENV:Client</faultcode>"
                                           "<faultstring>Invalid profile</faultstring></SOAP-ENV:Fault>"));
    EXPECT_THAT(Answer("<v:SetProfileBehavior/>"), HasSubstr("Invalid profile"));
}

TEST_F(BehaviorHandlersTest, EitherFormOfTheIdentifierWillDo)
{
    EXPECT_CALL(m_platform.profiles, DeleteRule(4, kId)).Times(2).WillRepeatedly(Return(true));
    EXPECT_THAT(Ask("DeleteProfileBehavior", kUrn),
                HasSubstr("<VideoAnalytics:DeleteProfileBehaviorResponse></"));
    EXPECT_THAT(Ask("DeleteProfileBehavior", kId), StartsWith(kOk));
}

// The way of a behavior doesn't tell rules from engines: the scene's own converter is found under its engine.
TEST_F(BehaviorHandlersTest, SceneAnalyzerPassesAsABehavior)
{
    const std::string scene = "com.varlo.engine.sceneanalyzer";
    const std::string module =
        "<tt:R xmlns:tt=\"urn:t\"><tt:AnalyticsModule Type=\"" + scene +
        "\"><tt:Parameters><tt:SimpleItem "
        "Name=\"Sensitivity\" Value=\"5\"/></tt:Parameters></tt:AnalyticsModule></tt:R>";
    Of(scene).engineDocument = module;
    Of(scene).behaviorDocument = "<analyticProfile/>";
    auto& profiles = m_platform.profiles;
    EXPECT_CALL(profiles, SetEngineConfig(_, _, _)).Times(0);
    EXPECT_CALL(profiles, SetRuleConfig(4, scene, HasSubstr("Name=\"Sensitivity\" Value=\"8\""), false))
        .WillOnce(Return(true));
    EXPECT_CALL(profiles, GetConfig(4)).WillOnce(Return(module));
    EXPECT_CALL(profiles, DeleteRule(4, scene)).WillOnce(Return(true));
    EXPECT_THAT(Set(scene, "<analyticProfile><sensitivity>8</sensitivity></analyticProfile>"),
                StartsWith(kOk));
    EXPECT_THAT(Ask("GetProfileBehavior", scene), HasSubstr("&lt;sensitivity&gt;5&lt;/sensitivity&gt;"));
    EXPECT_THAT(Ask("GetDefaultConfiguration", scene), HasSubstr("&lt;analyticProfile/&gt;"));
    EXPECT_THAT(Ask("DeleteProfileBehavior", scene), StartsWith(kOk));
}

TEST_F(BehaviorHandlersTest, SetStoresTheConvertedRuleWithItsFlagAndNothingElse)
{
    EXPECT_CALL(m_platform.profiles, SetEngineConfig(_, _, _)).Times(0);
    const auto converted =
        AllOf(HasSubstr("<tt:Rule Name=\"Gate\" Type=\"com.varlo.rule.loiteringdetection\">"),
              HasSubstr("<tt:SimpleItem Name=\"DwellTime\" Value=\"5\"/>"));
    EXPECT_CALL(m_platform.profiles, SetRuleConfig(4, kId, converted, true))
        .Times(2)
        .WillRepeatedly(Return(true));
    EXPECT_CALL(m_platform.profiles, SetRuleConfig(4, kId, converted, false))
        .Times(2)
        .WillRepeatedly(Return(true));
    EXPECT_THAT(Set(kUrn, Behavior("active=\"1\"")),
                HasSubstr("<VideoAnalytics:SetProfileBehaviorResponse></"));
    EXPECT_THAT(Set(kId, Behavior("active=\"7\"", kId)), StartsWith(kOk));
    EXPECT_THAT(Set(kUrn, Behavior("active=\"0\"")), StartsWith(kOk));
    EXPECT_THAT(Set(kUrn, Behavior("")), StartsWith(kOk));
}

TEST_F(BehaviorHandlersTest, EngineConfigurationIsStoredBeforeTheRuleWhateverTheManagerSays)
{
    const auto engine = HasSubstr("<tt:SimpleItem Name=\"Sensitivity\" Value=\"7\"/>");
    for (const bool stored : {true, false})
    {
        const testing::InSequence order;
        EXPECT_CALL(m_platform.profiles, SetEngineConfig(4, kEngine, engine)).WillOnce(Return(stored));
        EXPECT_CALL(m_platform.profiles, SetRuleConfig(4, kMotion, HasSubstr("<tt:Rule Name=\"Gate\""), true))
            .WillOnce(Return(true));
        EXPECT_THAT(
            Set(kMotionUrn, "<behavior id=\"" + std::string(kMotionUrn) +
                                "\" active=\"1\"><sensitivity>7</sensitivity><rois><roi><name>Gate</name>"
                                "</roi></rois></behavior>"),
            HasSubstr("<VideoAnalytics:SetProfileBehaviorResponse></"));
    }
}

TEST_F(BehaviorHandlersTest, EngineWithoutAConfigurationCountsAsNone)
{
    Of(kEngine).engineDocument = "";
    EXPECT_CALL(m_platform.profiles, SetEngineConfig(_, _, _)).Times(0);
    EXPECT_CALL(m_platform.profiles, SetRuleConfig(4, kMotion, HasSubstr("<tt:Rule Name=\"Gate\""), false))
        .WillOnce(Return(true));
    EXPECT_THAT(Set(kMotion, Behavior("", kMotionUrn)), StartsWith(kOk));
}

TEST_F(BehaviorHandlersTest, PluginWithoutAnEngineStoresItsRuleAlone)
{
    Of(kMotion).fields.dependencies = {"com.varlo.source.camera"};
    EXPECT_CALL(m_platform.profiles, SetEngineConfig(_, _, _)).Times(0);
    EXPECT_CALL(m_platform.profiles, SetRuleConfig(4, kMotion, HasSubstr("<tt:Rule "), false))
        .WillOnce(Return(true));
    EXPECT_THAT(Set(kMotion, Behavior("", kMotionUrn)), StartsWith(kOk));
}

TEST_F(BehaviorHandlersTest, DocumentThatCannotBeReadStoresNoEngineConfiguration)
{
    EXPECT_CALL(m_platform.profiles, SetEngineConfig(_, _, _)).Times(0);
    EXPECT_CALL(m_platform.profiles, SetRuleConfig(4, kMotion, IsEmpty(), false)).WillOnce(Return(true));
    EXPECT_THAT(Set(kMotion, "no XML"), StartsWith(kOk));
}

TEST_F(BehaviorHandlersTest, EngineConfigurationStaysStoredIfTheRuleIsRefused)
{
    EXPECT_CALL(m_platform.profiles, SetEngineConfig(4, kEngine, _)).WillOnce(Return(true));
    EXPECT_CALL(m_platform.profiles, SetRuleConfig).WillOnce(Throw(analytics::AnalyticsFault("disk full")));
    EXPECT_THAT(Set(kMotion, Behavior("", kMotionUrn)), HasSubstr("<faultcode>SOAP-ENV:Server</faultcode>"));
}

TEST_F(BehaviorHandlersTest, EngineConfigurationThatThrowsKeepsTheRuleAway)
{
    EXPECT_CALL(m_platform.profiles, SetEngineConfig(_, _, _))
        .WillOnce(Throw(analytics::ClientFault("Profile 4 does not exist")));
    EXPECT_CALL(m_platform.profiles, SetRuleConfig).Times(0);
    EXPECT_THAT(Set(kMotion, Behavior("", kMotionUrn)),
                HasSubstr("<faultstring>Profile 4 does not exist</faultstring>"));
}

TEST_F(BehaviorHandlersTest, WithoutAConverterTheTextIsStoredAsItCame)
{
    const std::string text = "anything <but> empty & odd";
    EXPECT_CALL(m_platform.profiles, SetRuleConfig(4, kBare, text, false)).WillOnce(Return(true));
    EXPECT_THAT(Set("urn:bare", text), StartsWith(kOk));
}

TEST_F(BehaviorHandlersTest, DocumentThatCannotBeReadReachesTheManagerEmpty)
{
    EXPECT_CALL(m_platform.profiles, SetRuleConfig(4, kId, IsEmpty(), false))
        .WillOnce(Throw(analytics::ClientFault("The behavior document could not be read")))
        .WillOnce(Return(false));
    EXPECT_THAT(Set(kUrn, "no XML"),
                HasSubstr("<faultstring>The behavior document could not be read</faultstring>"));
    EXPECT_EQ(Set(kUrn, Behavior("active=\"1\"", "urn:other")), "") << "a plain no gives no answer";
}

TEST_F(BehaviorHandlersTest, ManagerThatSaysNoGivesNoAnswer)
{
    EXPECT_CALL(m_platform.profiles, SetRuleConfig).WillOnce(Return(false));
    EXPECT_CALL(m_platform.profiles, DeleteRule).WillOnce(Return(false));
    EXPECT_EQ(Set(kUrn, Behavior("")), "");
    EXPECT_EQ(Ask("DeleteProfileBehavior", kUrn), "");
}

TEST_F(BehaviorHandlersTest, GetGivesEscapedTextWithoutADeclaration)
{
    EXPECT_CALL(m_platform.profiles, GetConfig(4)).WillOnce(Return(kRules));
    const std::string answer = Ask("GetProfileBehavior", kUrn);
    EXPECT_THAT(answer, StartsWith(kOk));
    EXPECT_THAT(answer, HasSubstr("&lt;behavior version=\"2.0\" id=\"" + std::string(kUrn)));
    EXPECT_THAT(answer, Not(HasSubstr("&lt;?xml")));
    EXPECT_THAT(answer, Not(HasSubstr("<behavior")));
}

TEST_F(BehaviorHandlersTest, GetFromAProfileWithNothingReadsLikeAnUnknownIdentifier)
{
    EXPECT_CALL(m_platform.profiles, GetConfig(4)).WillOnce(Return(""));
    EXPECT_THAT(Ask("GetProfileBehavior", kUrn), HasSubstr(kUnsupported));
}

TEST_F(BehaviorHandlersTest, GetThatDoesNotConvertIsEmptyAndNoFault)
{
    EXPECT_CALL(m_platform.profiles, GetConfig(4)).WillOnce(Return(kRules)).WillOnce(Return("no XML"));
    for (const char* id : {"urn:bare", kUrn})
    {
        const std::string answer = Ask("GetProfileBehavior", id);
        EXPECT_THAT(answer, StartsWith(kOk)) << id;
        EXPECT_THAT(answer, testing::ContainsRegex("<config></config>|<config/>")) << id;
    }
}

TEST_F(BehaviorHandlersTest, DefaultComesWithoutItsDeclaration)
{
    EXPECT_THAT(Ask("GetDefaultConfiguration", kUrn),
                HasSubstr("<config>&lt;behavior id=\"x\"/&gt;</config>"));
}

TEST_F(BehaviorHandlersTest, EmptyDefaultIsASuccess)
{
    const std::string answer = Ask("GetDefaultConfiguration", kBare);
    EXPECT_THAT(answer, StartsWith(kOk));
    EXPECT_THAT(answer, testing::ContainsRegex("<config></config>|<config/>"));
}

TEST_F(BehaviorHandlersTest, WhatThePlatformThrowsIsAFault)
{
    EXPECT_CALL(m_platform.profiles, GetConfig).WillOnce(Throw(analytics::AnalyticsFault("no store")));
    EXPECT_CALL(m_platform.profiles, DeleteRule)
        .WillOnce(Throw(analytics::ClientFault("Profile 4 does not exist")));
    EXPECT_THAT(Ask("GetProfileBehavior", kUrn), HasSubstr("<faultcode>SOAP-ENV:Server</faultcode>"));
    EXPECT_THAT(Ask("DeleteProfileBehavior", kUrn),
                HasSubstr("<faultstring>Profile 4 does not exist</faultstring>"));
}

} // namespace
