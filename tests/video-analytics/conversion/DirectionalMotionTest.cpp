#include <DirectionalMotionConverter.h>

#include "Families.h"

#include "store/ProfileDocument.h"

#include <analytics/ProfileDoc.h>

#include <gtest/gtest.h>

namespace conversiontest
{
namespace
{
using profile_conversion::DirectionalMotionConverter;
using profile_conversion::Points;
using namespace profile_conversion::directionalmotion;

constexpr char kEngine[] = "com.varlo.engine.directionalmotion";

Rule* NewRule(const std::string& name, bool enabled, const Points& zone)
{
    auto* rule = new Rule;
    rule->Name(name);
    rule->EnableAlarm(enabled);
    rule->Zone(zone);
    return rule;
}

class DirectionalMotionTest : public testing::Test
{
  protected:
    std::string RuleDocument()
    {
        std::string xml;
        EXPECT_TRUE(writer.ConfigToDoc(config, xml));
        return xml;
    }
    static const Rule& Only(const Config& model)
    {
        EXPECT_EQ(model.GetRules().size(), 1U);
        return *model.GetRules().front();
    }
    static void Read(const std::string& roi, Config& model)
    {
        EXPECT_TRUE(VarloDoc().DocToConfig(
            "<behavior id='" + Config::Id() + "'><rois>" + roi + "</rois></behavior>", model));
    }

    Plugins platform;
    Config config;
    OnvifDoc writer;
};

TEST_F(DirectionalMotionTest, StartsWithItsDefaults)
{
    const Rule rule;
    EXPECT_EQ(rule.Direction(), 0);
    EXPECT_EQ(rule.Sensitivity(), 5);
    EXPECT_EQ(rule.DwellTime(), 5);
    EXPECT_EQ(rule.Severity(), analytics::Minor);
    EXPECT_FALSE(rule.EnableAlarm());
    EXPECT_FALSE(config.AdvancedMode());
    EXPECT_EQ(config.Sensitivity(), 5);
    EXPECT_EQ(config.ObjectSpeed(), 5);
}

TEST_F(DirectionalMotionTest, ZoneOfTwoPointsIsALineAndComesBack)
{
    config.AddRule(NewRule("line", true, {{1, 2}, {3, 4}}));
    const std::string xml = RuleDocument();
    EXPECT_EQ(CountAt(xml, "//tt:Rule/tt:Parameters/tt:ElementItem/tt:Line/tt:Point"), 2U);
    EXPECT_EQ(CountAt(xml, "//tt:Polygon"), 0U);
    Config back;
    ASSERT_TRUE(OnvifDoc().DocToConfig(xml, back));
    ASSERT_EQ(Only(back).Zone().size(), 2U);
    EXPECT_EQ(Only(back).Zone()[0].X(), 1);
    EXPECT_EQ(Only(back).Zone()[1].Y(), 4);
}

TEST_F(DirectionalMotionTest, OtherZonesArePolygonsAndComeBack)
{
    for (const Points& zone : {Points{{1, 2}}, Points{{1, 2}, {3, 4}, {5, 6}}, Points(7)})
    {
        config.DeleteAllRules();
        config.AddRule(NewRule("zone", true, zone));
        const std::string xml = RuleDocument();
        EXPECT_EQ(CountAt(xml, "//tt:Polygon/tt:Point"), zone.size());
        EXPECT_EQ(CountAt(xml, "//tt:Line"), 0U);
        Config back;
        ASSERT_TRUE(OnvifDoc().DocToConfig(xml, back));
        EXPECT_EQ(Only(back).Zone().size(), zone.size());
    }
}

TEST_F(DirectionalMotionTest, PolygonComesBeforeALine)
{
    const std::string shapes =
        "<tt:ElementItem><tt:Line><tt:Point x='1'/><tt:Point x='2'/></tt:Line></tt:ElementItem>"
        "<tt:ElementItem><tt:Polygon><tt:Point x='7'/></tt:Polygon></tt:ElementItem>";
    ASSERT_TRUE(writer.DocToConfig("<tt:C xmlns:tt='urn:t'><tt:Rule Name='n' Type='" + Config::Id() +
                                       "'><tt:Parameters>" + shapes + "</tt:Parameters></tt:Rule></tt:C>",
                                   config));
    ASSERT_EQ(Only(config).Zone().size(), 1U);
    EXPECT_EQ(Only(config).Zone()[0].X(), 7);
}

TEST_F(DirectionalMotionTest, SettingsReachTheModuleAndComeBackFromTheStoredProfile)
{
    DirectionalMotionConverter converter;
    profile_conversion::ProfileParameters params;
    const std::string rule =
        converter.FromVarloToOnvif("<behavior id='" + Config::Id() +
                                       "' active='1' advanceMode='1'><sensitivity>7</sensitivity>"
                                       "<objectSpeed>2</objectSpeed></behavior>",
                                   params);
    std::string id;
    std::string engine;
    ASSERT_TRUE(converter.AdditionalComponent(id, engine));
    analytics::ProfileDoc stored;
    ASSERT_TRUE(stored.ParseString(analytics::MergeProfile(
        {{analytics::RulePlugin, Config::Id(), rule, true}, {analytics::EnginePlugin, id, engine}})));
    const std::unique_ptr<analytics::DocumentNode> module(stored.SelectEngine(kEngine));
    EXPECT_EQ(stored.GetSimpleItemValue("Sensitivity", 0, module.get(), true), 7);
    EXPECT_EQ(stored.GetSimpleItemValue("ObjectSpeed", 0, module.get(), true), 2);
    EXPECT_EQ(stored.GetSimpleItemValue("AdvancedMode", 0, module.get(), true), 1);
    const std::string back = DirectionalMotionConverter().FromOnvifToVarlo(stored.DumpToString(), params);
    EXPECT_EQ(TextAt(back, "behavior/sensitivity"), "7");
    EXPECT_EQ(TextAt(back, "behavior/objectSpeed"), "2");
    EXPECT_EQ(TextAt(back, "behavior/@advanceMode"), "1");
}

TEST_F(DirectionalMotionTest, RuleWithoutAlarmsIsNotForTheEngine)
{
    config.AddRule(NewRule("off", false, {{1, 2}, {3, 4}}));
    config.AddRule(NewRule("on", true, {{1, 2}, {3, 4}}));
    EXPECT_EQ(CountAt(RuleDocument(), "//tt:Rule"), 2U);
    const std::string engine = writer.ConfigToEngineDoc(kEngine, config);
    EXPECT_EQ(CountAt(engine, "//tt:Parameters/tt:ElementItem/tt:ElementItem"), 1U);
    const std::string copy = "//tt:Parameters/tt:ElementItem/tt:ElementItem[@Name='on']/";
    EXPECT_EQ(CountAt(engine, copy + "tt:SimpleItem"), 4U);
    EXPECT_EQ(CountAt(engine, copy + "tt:ElementItem/tt:Line/tt:Point"), 2U);
    EXPECT_EQ(CountAt(engine, "//tt:SimpleItem[@Name='Severity']"), 0U);
}

TEST_F(DirectionalMotionTest, CopiesJoinWhatTheDefaultHolds)
{
    platform.Of(kEngine).engineDocument =
        "<tt:C xmlns:tt='urn:t'><tt:SimpleItem Name='Sensitivity' Value='1'/>"
        "<tt:AnalyticsModule Type='other'><tt:Parameters><tt:SimpleItem Name='Sensitivity' Value='2'/>"
        "<tt:ElementItem Name='other'/></tt:Parameters></tt:AnalyticsModule>"
        "<tt:AnalyticsModule Type='com.varlo.engine.directionalmotion'><tt:Parameters>"
        "<tt:SimpleItem Name='Sensitivity' Value='3'/><tt:ElementItem><tt:ElementItem Name='kept'/>"
        "</tt:ElementItem><tt:ElementItem Name='second'/></tt:Parameters></tt:AnalyticsModule></tt:C>";
    config.Sensitivity(9);
    config.AddRule(NewRule("new", true, {}));
    const std::string engine = writer.ConfigToEngineDoc(kEngine, config);
    const std::string module =
        "//tt:AnalyticsModule[@Type='com.varlo.engine.directionalmotion']/tt:Parameters/";
    EXPECT_EQ(TextAt(engine, module + "tt:SimpleItem/@Value"), "9");
    EXPECT_EQ(TextAt(engine, "//tt:AnalyticsModule[@Type='other']//tt:SimpleItem/@Value"), "2")
        << "the items are looked for in the module alone";
    EXPECT_EQ(TextAt(engine, module + "tt:ElementItem[1]/tt:ElementItem[1]/@Name"), "kept");
    EXPECT_EQ(TextAt(engine, module + "tt:ElementItem[1]/tt:ElementItem[2]/@Name"), "new");
    EXPECT_EQ(CountAt(engine, module + "tt:ElementItem/tt:ElementItem/tt:ElementItem"), 0U)
        << "an empty zone adds nothing";
}

TEST_F(DirectionalMotionTest, RulesAreNeverReadFromTheEngine)
{
    config.AddRule(NewRule("on", true, {{1, 2}, {3, 4}}));
    Config back;
    ASSERT_TRUE(OnvifDoc().DocToConfig(writer.ConfigToEngineDoc(kEngine, config), back));
    EXPECT_TRUE(back.GetRules().empty());
}

TEST_F(DirectionalMotionTest, FillsWhatIsMissing)
{
    Config client;
    Read("<roi/>", client);
    EXPECT_EQ(Only(client).Sensitivity(), 5);
    EXPECT_EQ(Only(client).Direction(), 0);
    EXPECT_EQ(client.ObjectSpeed(), 5);
    Config engine;
    ASSERT_TRUE(OnvifDoc().DocToConfig("<tt:C xmlns:tt='urn:t'><tt:Rule Type='" + Config::Id() +
                                           "'/><tt:AnalyticsModule Type='" + kEngine + "'/></tt:C>",
                                       engine));
    EXPECT_EQ(Only(engine).Sensitivity(), 5);
    EXPECT_EQ(Only(engine).DwellTime(), 5);
    EXPECT_EQ(engine.ObjectSpeed(), 5);
    EXPECT_EQ(engine.Sensitivity(), 5);
    EXPECT_FALSE(engine.AdvancedMode());
}

TEST_F(DirectionalMotionTest, WritesEveryZoneAsIncluded)
{
    Read("<roi><include>0</include></roi><roi/>", config);
    std::string xml;
    ASSERT_TRUE(VarloDoc().ConfigToDoc(config, xml));
    EXPECT_EQ(CountAt(xml, "//roi/include[text()='1']"), 2U);
}
} // namespace
} // namespace conversiontest
