#include "RuleFixture.h"

#include <analytics/ProfileDoc.h>

namespace conversiontest
{
namespace
{
using profile_conversion::Line;
using profile_conversion::Point;
using profile_conversion::objectcounting::OnvifDoc;
using profile_conversion::objectcounting::Rule;
using profile_conversion::objectcounting::VarloDoc;

// A size as text: "x,y x,y".
std::string Text(const Line& line)
{
    std::string text;
    for (const Point& point : line)
        text += (text.empty() ? "" : " ") + std::to_string(point.X()) + "," + std::to_string(point.Y());
    return text;
}

std::string Vertex(int x, int y)
{
    return "<vertex><x>" + std::to_string(x) + "</x><y>" + std::to_string(y) + "</y></vertex>";
}

class ObjectCountingTest : public RuleFixture<ObjectCounting>
{
  protected:
    // The object size of a behavior document with these sizes in its head.
    std::string ReadSizes(const std::string& sizes)
    {
        EXPECT_TRUE(VarloDoc().DocToConfig(
            Behavior("<filters><objectsizes>" + sizes + "</objectsizes></filters>"), config));
        return Text(config.AvgObjectSize());
    }
    static std::string Size(const std::string& name, const std::string& vertices)
    {
        return "<objectsize><name>" + name + "</name><vertices>" + vertices + "</vertices></objectsize>";
    }
    // The parameters of an engine rule with that size.
    static std::string Filters(const std::string& points)
    {
        return "<tt:ElementItem Name='ObjectSizeFilters'><tt:Rectangle Name='AvgSize'>" + points +
               "</tt:Rectangle></tt:ElementItem>";
    }
    std::string ReadRules(const std::string& rules)
    {
        EXPECT_TRUE(OnvifDoc().DocToConfig(Engine(rules), config));
        return Text(config.AvgObjectSize());
    }
};

TEST_F(ObjectCountingTest, StartsWithItsDefaults)
{
    const Rule rule;
    EXPECT_FALSE(rule.EnableAlarm());
    EXPECT_EQ(rule.Direction(), 8);
    EXPECT_EQ(rule.Severity(), analytics::Minor);
    EXPECT_EQ(rule.DwellTime(), 5);
    EXPECT_EQ(rule.AlarmOnCount(), 1);
    EXPECT_FALSE(rule.ResetCounterOnAlarm());
    EXPECT_EQ(Text(config.AvgObjectSize()), "0,0 0,0");
}

TEST_F(ObjectCountingTest, SizeTakesItsFirstTwoVertices)
{
    EXPECT_EQ(ReadSizes(Size("avgObj", Vertex(1, 2) + Vertex(3, 4) + Vertex(5, 6))), "1,2 3,4");
    EXPECT_EQ(ReadSizes(Size("avgObj", Vertex(7, 8))), "7,8 0,0");
    EXPECT_EQ(ReadSizes(Size("avgObj", "<vertex><y>4</y></vertex><vertex/>")), "0,4 0,0");
}

TEST_F(ObjectCountingTest, OtherSizesAreNotRead)
{
    EXPECT_EQ(
        ReadSizes(Size("minObj", Vertex(1, 2)) + Size("avgObj", Vertex(3, 4)) + Size("maxObj", Vertex(5, 6))),
        "3,4 0,0");
}

TEST_F(ObjectCountingTest, DocumentWithoutASizeSetsItToNothingInEveryRule)
{
    config.AvgObjectSize({{1, 2}, {3, 4}});
    ASSERT_TRUE(VarloDoc().DocToConfig(Rois("<roi/><roi/>"), config));
    EXPECT_EQ(Text(config.AvgObjectSize()), "0,0 0,0");
    EXPECT_EQ(CountAt(WriteEngine(), "//tt:Rule/tt:Parameters/tt:ElementItem[@Name='ObjectSizeFilters']/"
                                     "tt:Rectangle[@Name='AvgSize']/tt:Point[@x='0' and @y='0']"),
              4U);
}

TEST_F(ObjectCountingTest, SizeStandsInEveryRuleAheadOfItsItems)
{
    config.AvgObjectSize({{1, 2}, {3, 4}});
    config.AddRule(new Rule);
    config.AddRule(new Rule);
    const std::string xml = WriteEngine();
    const std::string first = "//tt:Rule/tt:Parameters/*[1][@Name='ObjectSizeFilters']/tt:Rectangle/";
    EXPECT_EQ(CountAt(xml, first + "tt:Point[1][@x='1' and @y='2']"), 2U);
    EXPECT_EQ(CountAt(xml, first + "tt:Point[2][@x='3' and @y='4']"), 2U);
    EXPECT_EQ(CountAt(xml, "//tt:Rule[1]/tt:Parameters/*"), 7U) << "six items, and no item of an empty zone";
}

TEST_F(ObjectCountingTest, SizeIsAlwaysWrittenAsTwoVertices)
{
    config.Active(true);
    EXPECT_EQ(CountAt(Write(), "behavior/filters/objectsizes/objectsize[name='avgObj']/vertices/"
                               "vertex[x='0' and y='0']"),
              2U);
}

TEST_F(ObjectCountingTest, LastRuleGivesTheSize)
{
    const std::string one = RuleText(Filters("<tt:Point x='1' y='2'/><tt:Point x='3' y='4'/>"));
    const std::string two =
        RuleText(Filters("<tt:Point x='5' y='6'/><tt:Point x='7' y='8'/><tt:Point x='9' y='9'/>"));
    EXPECT_EQ(ReadRules(one + two), "5,6 7,8");
    EXPECT_EQ(ReadRules(two + one), "1,2 3,4");
    EXPECT_EQ(ReadRules(two + one + RuleText("")), "1,2 3,4") << "a rule without filters says nothing";
    EXPECT_EQ(ReadRules(one + RuleText(Filters("<tt:Point x='7'/>"))), "7,0 0,0") << "no point is kept";
    EXPECT_EQ(ReadRules(one + RuleText("<tt:ElementItem Name='ObjectSizeFilters'/>")), "0,0 0,0");
}

TEST_F(ObjectCountingTest, LosesTheSizeWithoutRules)
{
    profile_conversion::ProfileParameters params;
    const std::string sizes =
        "<filters><objectsizes>" + Size("avgObj", Vertex(1, 2)) + "</objectsizes></filters>";
    const std::string engine =
        profile_conversion::ObjectCountingConverter().FromVarloToOnvif(Behavior(sizes), params);
    EXPECT_EQ(CountAt(engine, "//tt:Rectangle"), 0U);
    EXPECT_EQ(ReadRules(""), "0,0 0,0");
}

TEST_F(ObjectCountingTest, FillsWhatARoiLeavesOutAndTheEngineThenHoldsIt)
{
    EXPECT_EQ(Read("<roi/>").Direction(), 8);
    EXPECT_EQ(config.GetRules()[0]->AlarmOnCount(), 1);
    const std::string xml = WriteEngine();
    EXPECT_EQ(TextAt(xml, "//tt:SimpleItem[@Name='Direction']/@Value"), "8");
    EXPECT_EQ(TextAt(xml, "//tt:SimpleItem[@Name='AlarmOnCount']/@Value"), "1");
    const std::string back = profile_conversion::ObjectCountingConverter().FromOnvifToVarlo(xml, {});
    EXPECT_EQ(TextAt(back, "//roi/direction"), "8");
    EXPECT_EQ(TextAt(back, "//roi/alarmCount"), "1");
}

TEST_F(ObjectCountingTest, EngineRuleWithoutItemsReadsAsZeros)
{
    const Rule& rule = ReadEngine("");
    EXPECT_EQ(rule.DwellTime(), 0);
    EXPECT_EQ(rule.AlarmOnCount(), 0);
    EXPECT_EQ(rule.Direction(), 0);
    EXPECT_FALSE(rule.EnableAlarm());
    EXPECT_FALSE(rule.ResetCounterOnAlarm());
    EXPECT_EQ(rule.Severity(), analytics::Minor);
}

TEST_F(ObjectCountingTest, AnyNumberResetsTheCounterAndComesBackAsOne)
{
    EXPECT_TRUE(Read("<roi><countReset>2</countReset></roi>").ResetCounterOnAlarm());
    EXPECT_EQ(TextAt(Write(), "//roi/countReset"), "1");
    EXPECT_EQ(TextAt(WriteEngine(), "//tt:SimpleItem[@Name='ResetCounterOnAlarm']/@Value"), "1");
    EXPECT_TRUE(ReadEngine("<tt:SimpleItem Name='ResetCounterOnAlarm' Value='-1'/>").ResetCounterOnAlarm());
}

TEST_F(ObjectCountingTest, SizeFiltersNeedTheirNodes)
{
    config.AvgObjectSize({{1, 2}, {3, 4}});
    analytics::ProfileDoc doc;
    ASSERT_TRUE(doc.ParseString("<tt:P xmlns:tt='urn:t'/>"));
    const std::unique_ptr<analytics::DocumentNode> node(doc.SelectNode("tt:P", nullptr));
    OnvifDoc onvif;
    Rule rule;
    onvif.AddRuleNode(config, &rule, nullptr);
    onvif.AddRuleNode(config, nullptr, node.get());
    onvif.AddObjectSizeFiltersNode(config, nullptr);
    EXPECT_EQ(node->DumpToString(), "<tt:P xmlns:tt=\"urn:t\"/>");
    onvif.NodeToObjectSizeFilters(config, nullptr, &doc);
    onvif.NodeToObjectSizeFilters(config, node.get(), nullptr);
    onvif.NodeToObjectSizeFilters(config, node.get(), &doc);
    EXPECT_EQ(Text(config.AvgObjectSize()), "1,2 3,4");
    onvif.AddObjectSizeFiltersNode(config, node.get());
    EXPECT_EQ(node->DumpToString(),
              "<tt:P xmlns:tt=\"urn:t\"><tt:ElementItem Name=\"ObjectSizeFilters\"><tt:Rectangle "
              "Name=\"AvgSize\"><tt:Point x=\"1\" y=\"2\"/><tt:Point x=\"3\" "
              "y=\"4\"/></tt:Rectangle></tt:ElementItem></tt:P>");
    onvif.AddRuleNode(config, &rule, node.get());
    EXPECT_EQ(
        CountAt(doc.DumpToString(), "//tt:Rule/tt:Parameters/tt:ElementItem/tt:Rectangle/tt:Point[@x='3']"),
        1U);
}
} // namespace
} // namespace conversiontest
