#include "Families.h"

#include <CameraSabotageConverter.h>

#include <gtest/gtest.h>

namespace conversiontest
{
namespace
{
using profile_conversion::CameraSabotageConverter;
using profile_conversion::ProfileParameters;
using namespace profile_conversion::camerasabotage;

constexpr char kDelay[] = "//tt:Rule/tt:Parameters/tt:SimpleItem[@Name='AlarmDelay']/@Value";

class CameraSabotageTest : public testing::Test
{
  protected:
    static std::string Behavior(const std::string& content)
    {
        return "<behavior id='" + Config::Id() + "' active='1'>" + content + "</behavior>";
    }
    static std::string Engine(const std::string& items)
    {
        return "<tt:C xmlns:tt='urn:t'><tt:Rule Name='n' Type='" + Config::Id() + "'><tt:Parameters>" +
               items + "</tt:Parameters></tt:Rule></tt:C>";
    }
    std::string Convert(const std::string& content)
    {
        return CameraSabotageConverter().FromVarloToOnvif(Behavior(content), params);
    }
    void Read(const std::string& content) { EXPECT_TRUE(VarloDoc().DocToConfig(Behavior(content), config)); }

    Plugins platform;
    Config config;
    ProfileParameters params;
};

TEST_F(CameraSabotageTest, StartsWithItsDefaults)
{
    EXPECT_FALSE(config.Active());
    EXPECT_EQ(config.AlarmDelay(), 3);
    EXPECT_EQ(config.Severity(), analytics::Minor);
    EXPECT_EQ(Config::Alias(), "urn:varlo-com:AlgorithmId:CameraSabotage:1");
}

TEST_F(CameraSabotageTest, EmptyBehaviorKeepsTheModelsDelayAndNotTheTemplates)
{
    Read("");
    EXPECT_TRUE(config.Active());
    EXPECT_EQ(config.AlarmDelay(), 3);
    EXPECT_EQ(config.Severity(), analytics::Minor);
    std::string xml;
    ASSERT_TRUE(VarloDoc().ConfigToDoc(config, xml));
    EXPECT_EQ(TextAt(xml, "behavior/alarmDelay"), "3");
}

TEST_F(CameraSabotageTest, TakesTheFirstElementAtAnyDepth)
{
    Read("<a><b><alarmDelay>8</alarmDelay></b></a><alarmDelay>9</alarmDelay>"
         "<a><alarmSeverity>2</alarmSeverity></a><alarmSeverity>1</alarmSeverity>");
    EXPECT_EQ(config.AlarmDelay(), 8);
    EXPECT_EQ(config.Severity(), analytics::Major);
}

TEST_F(CameraSabotageTest, EditsThePluginsOwnRuleAndNothingElse)
{
    std::string text = platform.Of(Config::Id()).engineDocument;
    const std::string rules = "<tt:RuleEngineConfiguration>";
    text.insert(text.find(rules) + rules.size(), "<tt:Rule Name='AlarmDelay' Type='other'><tt:Parameters>"
                                                 "<tt:SimpleItem Name='AlarmDelay' Value='99'/>"
                                                 "</tt:Parameters></tt:Rule><tt:Extra/>");
    text.insert(text.find("<tt:SimpleItem Name=\"Severity\""),
                "<tt:SimpleItem Name='Other' Value='7'/><tt:ElementItem/>");
    platform.Of(Config::Id()).engineDocument = text;
    const std::string converted = Convert("<alarmDelay>10</alarmDelay><alarmSeverity>2</alarmSeverity>");
    for (const auto& [from, to] : {std::pair(R"("AlarmDelay" Value="5")", R"("AlarmDelay" Value="10")"),
                                   std::pair(R"("Severity" Value="0")", R"("Severity" Value="2")")})
        text.replace(text.find(from), std::string(from).size(), to);
    EXPECT_EQ(Canonical(converted), Canonical(text));
}

TEST_F(CameraSabotageTest, ChangesTheFirstRuleOfItsTypeAlone)
{
    const std::string rule = "<tt:Rule Type='" + Config::Id() +
                             "'><tt:Parameters><tt:SimpleItem Name='AlarmDelay' Value='1'/>"
                             "</tt:Parameters></tt:Rule>";
    platform.Of(Config::Id()).engineDocument = "<tt:C xmlns:tt='urn:t'>" + rule + rule + "</tt:C>";
    const std::string xml = Convert("<alarmDelay>10</alarmDelay>");
    EXPECT_EQ(TextAt(xml, "//tt:Rule[1]//@Value"), "10");
    EXPECT_EQ(TextAt(xml, "//tt:Rule[2]//@Value"), "1");
}

TEST_F(CameraSabotageTest, AddsNoItemThatTheRuleLacks)
{
    const std::string text = Engine("<tt:SimpleItem Name='AlarmDelay'/>");
    platform.Of(Config::Id()).engineDocument = text;
    const std::string xml = Convert("<alarmDelay>10</alarmDelay><alarmSeverity>2</alarmSeverity>");
    EXPECT_EQ(TextAt(xml, kDelay), "10");
    EXPECT_EQ(CountAt(xml, "//tt:SimpleItem"), 1U);
}

TEST_F(CameraSabotageTest, DefaultWithoutTheRuleGoesOutAsItStands)
{
    const std::string text = "<tt:C xmlns:tt='urn:t'><tt:Rule Type='other'><tt:Parameters>"
                             "<tt:SimpleItem Name='AlarmDelay' Value='9'/></tt:Parameters></tt:Rule></tt:C>";
    platform.Of(Config::Id()).engineDocument = text;
    EXPECT_EQ(Canonical(Convert("<alarmDelay>10</alarmDelay>")), Canonical(text));
    EXPECT_TRUE(params.Active());
}

TEST_F(CameraSabotageTest, ProfileWithoutTheRuleHasNoSuchBehavior)
{
    CameraSabotageConverter converter;
    EXPECT_EQ(converter.FromOnvifToVarlo("<tt:C xmlns:tt='urn:t'/>", {}), "");
    const std::string mark =
        "<va:ActiveRule xmlns:va='urn:varlo-com:analytics:engine-document:1' Type='" + Config::Id() + "'/>";
    EXPECT_EQ(converter.FromOnvifToVarlo(mark, {}), "") << "also if it is marked as active";
}

TEST_F(CameraSabotageTest, InactiveBehaviorIsWrittenInFull)
{
    const std::string xml = CameraSabotageConverter().FromOnvifToVarlo(
        Engine("<tt:SimpleItem Name='AlarmDelay' Value='17'/><tt:SimpleItem Name='Severity' Value='9'/>"),
        {});
    EXPECT_EQ(TextAt(xml, "behavior/@active"), "0");
    EXPECT_EQ(TextAt(xml, "behavior/alarmDelay"), "17");
    EXPECT_EQ(TextAt(xml, "behavior/alarmSeverity"), "3");
    EXPECT_EQ(CountAt(xml, "behavior/*"), 2U);
}

TEST_F(CameraSabotageTest, FillsWhatTheEngineRuleLeavesOut)
{
    EXPECT_TRUE(OnvifDoc().DocToConfig(Engine("<tt:SimpleItem Name='AlarmDelay' Value='4'/>"), config));
    EXPECT_EQ(config.AlarmDelay(), 4);
    EXPECT_EQ(config.Severity(), analytics::Minor);
    config.Severity(analytics::Critical);
    EXPECT_TRUE(OnvifDoc().DocToConfig(Engine(""), config));
    EXPECT_EQ(config.AlarmDelay(), 4) << "the delay keeps what the model has";
    EXPECT_EQ(config.Severity(), analytics::Minor) << "the severity starts anew";
}

TEST_F(CameraSabotageTest, LeavesTheTextAloneOnFailure)
{
    std::string xml = "before";
    platform.Of(Config::Id()).engineDocument = "";
    EXPECT_FALSE(OnvifDoc().ConfigToDoc(config, xml));
    platform.Of(Config::Id()).fields.alias = "urn:other";
    EXPECT_FALSE(VarloDoc().ConfigToDoc(config, xml));
    EXPECT_EQ(xml, "before");
}

TEST_F(CameraSabotageTest, HasNoAdditionalComponent)
{
    std::string id = "as";
    std::string text = "before";
    CameraSabotageConverter converter;
    EXPECT_NE(converter.FromVarloToOnvif(Behavior(""), params), "");
    EXPECT_FALSE(converter.AdditionalComponent(id, text));
    EXPECT_EQ(id + text, "asbefore");
}

TEST_F(CameraSabotageTest, NamesBothIdentifiersInItsQuery)
{
    const VarloDoc doc;
    EXPECT_EQ(doc.BehaviorNodeQry(),
              "//behavior[@id='" + Config::Id() + "' or @id='" + Config::Alias() + "']");
}
} // namespace
} // namespace conversiontest
