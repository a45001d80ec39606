#include <ObjectRemovalConverter.h>

#include "Families.h"

#include <gtest/gtest.h>

namespace conversiontest
{
namespace
{
using namespace profile_conversion::objectremoval;

constexpr char kEngine[] = "com.varlo.engine.objectremoval";
const std::string kCopy = "//tt:Parameters/tt:ElementItem[1]/tt:ElementItem";

class ObjectRemovalTest : public testing::Test
{
  protected:
    Rule& Add(const std::string& name)
    {
        auto* rule = new Rule;
        rule->Name(name);
        config.AddRule(rule);
        return *rule;
    }

    Plugins platform;
    Config config;
    OnvifDoc writer;
};

TEST_F(ObjectRemovalTest, MissingDelayIsThreeToClientsAndFiveToTheEngine)
{
    EXPECT_EQ(Rule().AlarmDelay(), 3);
    ASSERT_TRUE(
        VarloDoc().DocToConfig("<behavior id='" + Config::Id() + "'><rois><roi/></rois></behavior>", config));
    EXPECT_EQ(config.GetRules().at(0)->AlarmDelay(), 3);
    ASSERT_TRUE(
        writer.DocToConfig("<tt:C xmlns:tt='urn:t'><tt:Rule Type='" + Config::Id() + "'/></tt:C>", config));
    EXPECT_EQ(config.GetRules().at(1)->AlarmDelay(), 5);
    EXPECT_EQ(config.GetRules().at(1)->DwellTime(), 5);
}

TEST_F(ObjectRemovalTest, RuleWithoutAZoneHasAnEmptyPolygonInTheEngineAlone)
{
    Add("no zone");
    std::string xml;
    ASSERT_TRUE(writer.ConfigToDoc(config, xml));
    EXPECT_EQ(CountAt(xml, "//tt:Rule"), 1U);
    EXPECT_EQ(CountAt(xml, "//tt:ElementItem | //tt:Polygon"), 0U);
    const std::string engine = writer.ConfigToEngineDoc(kEngine, config);
    EXPECT_EQ(CountAt(engine, kCopy + "/tt:Polygon"), 1U);
    EXPECT_EQ(CountAt(engine, "//tt:Point"), 0U);
}

TEST_F(ObjectRemovalTest, CopiesEveryRuleAlsoOfTheSameNameAndWithoutAlarms)
{
    Add("Lobby").Zone({{1, 2}, {3, 4}});
    Rule& second = Add("Lobby");
    second.EnableAlarm(true);
    second.AlarmDelay(7);
    Add("");
    const std::string engine = writer.ConfigToEngineDoc(kEngine, config);
    EXPECT_EQ(CountAt(engine, kCopy + "[@Name='Lobby']"), 2U);
    EXPECT_EQ(CountAt(engine, kCopy + "[@Name='']"), 1U);
    EXPECT_EQ(CountAt(engine, kCopy + "[1]/tt:Polygon/tt:Point"), 2U) << "two points are no line here";
    EXPECT_EQ(TextAt(engine, kCopy + "[2]/tt:SimpleItem[1]/@Name"), "AlarmDelay");
    EXPECT_EQ(TextAt(engine, kCopy + "[2]/tt:SimpleItem[1]/@Value"), "7");
    EXPECT_EQ(TextAt(engine, kCopy + "[2]/tt:SimpleItem[2]/@Name"), "DwellTime");
    EXPECT_EQ(CountAt(engine, kCopy + "[2]/tt:SimpleItem"), 2U);
}

TEST_F(ObjectRemovalTest, CopiesJoinWhatStandsInTheContainer)
{
    std::string& document = platform.Of(kEngine).engineDocument;
    const std::string container = "<tt:ElementItem Name=\"Rules\"/>";
    document.replace(document.find(container), container.size(),
                     "<tt:ElementItem><tt:ElementItem Name='kept'/></tt:ElementItem>");
    Add("new");
    const std::string engine = writer.ConfigToEngineDoc(kEngine, config);
    EXPECT_EQ(TextAt(engine, kCopy + "[1]/@Name"), "kept");
    EXPECT_EQ(TextAt(engine, kCopy + "[2]/@Name"), "new");
}

TEST_F(ObjectRemovalTest, SettingsArriveWithOrWithoutAContainer)
{
    config.AdvancedMode(true);
    config.Sensitivity(9);
    Add("rule");
    for (const bool withContainer : {true, false})
    {
        if (!withContainer)
            platform.Of(kEngine).engineDocument =
                "<tt:C xmlns:tt='urn:t'><tt:Parameters><tt:SimpleItem Name='Sensitivity' Value='5'/>"
                "<tt:SimpleItem Name='AdvancedMode' Value='0'/></tt:Parameters></tt:C>";
        const std::string engine = writer.ConfigToEngineDoc(kEngine, config);
        EXPECT_EQ(TextAt(engine, "//tt:SimpleItem[@Name='AdvancedMode']/@Value"), "1");
        EXPECT_EQ(TextAt(engine, "//tt:SimpleItem[@Name='Sensitivity']/@Value"), "9")
            << "found anywhere in the document, without a module too";
        EXPECT_EQ(CountAt(engine, kCopy), withContainer ? 1U : 0U);
    }
}

TEST_F(ObjectRemovalTest, PassesADwellTimeBelowItsBound)
{
    profile_conversion::ProfileParameters params;
    const std::string engine = profile_conversion::ObjectRemovalConverter().FromVarloToOnvif(
        "<behavior id='" + Config::Id() + "'><rois><roi><dwellTime>2</dwellTime></roi></rois></behavior>",
        params);
    EXPECT_EQ(TextAt(engine, "//tt:SimpleItem[@Name='DwellTime']/@Value"), "2");
    const std::string back = profile_conversion::ObjectRemovalConverter().FromOnvifToVarlo(engine, params);
    EXPECT_EQ(TextAt(back, "//roi/dwellTime"), "2");
    EXPECT_EQ(TextAt(back, "//roi/dwellTime/@min"), "3");
}
} // namespace
} // namespace conversiontest
