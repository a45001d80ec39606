#include <analytics/ProfileDoc.h>

#include "Nodes.h"

#include <gtest/gtest.h>

namespace analytics::test
{
namespace
{
constexpr char kEngine[] = R"(<tt:Configuration xmlns:tt="http://www.onvif.org/ver10/schema">
  <tt:AnalyticsEngineConfiguration>
    <tt:AnalyticsModule Name="tracker" Type="com.varlo.engine.a">
      <tt:Parameters>
        <tt:SimpleItem Name="Sensitivity" Value="7"/>
        <tt:ElementItem Name="Container"><tt:SimpleItem Name="Inner" Value="1"/>
          <tt:ElementItem Name="Nested"/></tt:ElementItem>
        <tt:ElementItem Name="Zones"><tt:Polygon><tt:Point x="1" y="2"/></tt:Polygon></tt:ElementItem>
      </tt:Parameters>
    </tt:AnalyticsModule>
  </tt:AnalyticsEngineConfiguration>
  <tt:RuleEngineConfiguration>
    <tt:Rule Name="first" Type="r.one"><tt:Parameters>
      <tt:SimpleItem Name="DwellTime" Value=" 12 "/><tt:SimpleItem Name="DwellTime" Value="13"/>
      <tt:SimpleItem Name="Text" Value="x"/><tt:SimpleItem Name="Bare"/><tt:SimpleItem Name="It's &quot;q&quot;" Value="3"/>
      <tt:ElementItem><tt:Polygon><tt:Point x="1" y="2"/> <tt:Point y="4"/><tt:Point x="-5"/></tt:Polygon></tt:ElementItem>
    </tt:Parameters></tt:Rule>
    <tt:Rule Name="other" Type="r.two"/>
    <tt:Rule Name="second" Type="r.one"><tt:Parameters/></tt:Rule>
    <Rule Name="foreign" Type="r.one"/>
    <va:ActiveRule xmlns:va="urn:varlo-com:analytics:engine-document:1" Type="r.two"/>
    <va:ActiveRule xmlns:va="urn:varlo-com:analytics:engine-document:1" Type="r.none"/>
    <tt:ActiveRule Type="r.one"/>
  </tt:RuleEngineConfiguration>
</tt:Configuration>)";

class ProfileDocTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        ASSERT_TRUE(doc.ParseString(kEngine));
        rule.reset(doc.SelectRule("r.one"));
        engine.reset(doc.SelectEngine("com.varlo.engine.a"));
        ASSERT_NE(rule, nullptr);
        ASSERT_NE(engine, nullptr);
    }
    std::string RuleNames(const std::string& id)
    {
        std::string names;
        for (DocumentNode* node : doc.SelectRules(id))
        {
            names += node->GetProperty("Name") + " ";
            delete node;
        }
        return names;
    }
    ProfileDoc doc;
    Node rule;
    Node engine;
};

TEST_F(ProfileDocTest, SelectsRulesByType)
{
    EXPECT_EQ(RuleNames("r.one"), "first second ");
    EXPECT_EQ(RuleNames("r.two"), "other ");
    EXPECT_EQ(RuleNames("r"), "");
    EXPECT_EQ(RuleNames(""), "");
    EXPECT_EQ(rule->GetProperty("Name"), "first");
    EXPECT_EQ(doc.SelectRule("r.three"), nullptr);
}

TEST_F(ProfileDocTest, DeletesRulesOfOneType)
{
    const std::string before = doc.DumpToString();
    doc.DeleteRules("r.three");
    EXPECT_EQ(doc.DumpToString(), before);
    doc.DeleteRules("r.one");
    EXPECT_EQ(RuleNames("r.one"), "");
    EXPECT_EQ(RuleNames("r.two"), "other ");
    EXPECT_NE(Select(doc, "//tt:RuleEngineConfiguration"), nullptr);
}

TEST_F(ProfileDocTest, FindsAddedRulesAlsoAfterADump)
{
    const Node container = Select(doc, "//tt:RuleEngineConfiguration");
    const Node added(container->AddNewChild("Rule", ""));
    added->SetProperty("Name", std::string("third"));
    added->SetProperty("Type", std::string("r.one"));
    EXPECT_EQ(RuleNames("r.one"), "first second third ");
    ASSERT_TRUE(doc.ParseString(doc.DumpToString()));
    EXPECT_EQ(RuleNames("r.one"), "first second third ");
}

TEST_F(ProfileDocTest, ReadsTheMarkOfActiveRules)
{
    EXPECT_TRUE(doc.RuleIsActive("r.two"));
    EXPECT_TRUE(doc.RuleIsActive("r.none")) << "active without any rule";
    EXPECT_FALSE(doc.RuleIsActive("r.one")) << "the mark is not in our namespace";
    EXPECT_FALSE(doc.RuleIsActive(""));
    EXPECT_FALSE(ProfileDoc().RuleIsActive("r.two"));
}

TEST_F(ProfileDocTest, SelectsEngines)
{
    EXPECT_EQ(engine->GetProperty("Name"), "tracker");
    EXPECT_EQ(doc.SelectEngine("com.varlo.engine"), nullptr);
    EXPECT_EQ(doc.SelectEngine(""), nullptr);
    EXPECT_EQ(doc.SelectEngine("r.one"), nullptr);
}

TEST_F(ProfileDocTest, LeadsToTheItemsOfANode)
{
    const auto names = [&](const std::string& query, const Node& context)
    {
        std::string result;
        for (const Node& node : SelectAll(doc, query, context))
            result += node->GetProperty("Name") + " ";
        return result;
    };
    EXPECT_EQ(names(doc.ElementItemQry(true), engine), "Container Zones ");
    EXPECT_EQ(names(doc.ElementItemQry(true), nullptr), "Container Zones  ") << "from the document root too";
    EXPECT_EQ(names(doc.ElementItemQry(true) + "[@Name='Zones']", engine), "Zones ");
    EXPECT_EQ(SelectAll(doc, doc.ElementItemQry(true) + "[@Name=\"Zones\"]/tt:Polygon", engine).size(), 1U);
    EXPECT_EQ(SelectAll(doc, doc.ElementItemQry(true) + "/tt:Polygon/tt:Point", rule).size(), 3U);
    EXPECT_EQ(names(doc.SimpleItemQry(true), engine), "Sensitivity ");
    EXPECT_EQ(names(doc.SimpleItemQry(true) + "[@Name='Text']", rule), "Text ");

    const Node first(doc.SelectElementItemNode(engine.get(), true));
    EXPECT_EQ(first->GetProperty("Name"), "Container");
    EXPECT_EQ(names(doc.ElementItemQry(false), first), "Nested ");
    EXPECT_EQ(names(doc.SimpleItemQry(false), first), "Inner ");
    const Node nested(doc.SelectElementItemNode(first.get(), false));
    EXPECT_EQ(nested->GetProperty("Name"), "Nested");
    const Node bare(doc.SelectRule("r.two"));
    EXPECT_EQ(doc.SelectElementItemNode(bare.get(), true), nullptr);
}

TEST_F(ProfileDocTest, ReadsSimpleItems)
{
    EXPECT_EQ(doc.GetSimpleItemValue("DwellTime", 5, rule.get(), true), 12) << "the first of that name";
    EXPECT_EQ(doc.GetSimpleItemValue("Missing", 5, rule.get(), true), 5);
    EXPECT_EQ(doc.GetSimpleItemValue("Text", 5, rule.get(), true), 5);
    EXPECT_EQ(doc.GetSimpleItemValue("Bare", 5, rule.get(), true), 5);
    EXPECT_EQ(doc.GetSimpleItemValue("It's \"q\"", 5, rule.get(), true), 3);
    EXPECT_EQ(doc.GetSimpleItemValue("Sensitivity", 5, rule.get(), true), 5) << "another node's item";
    EXPECT_EQ(doc.GetSimpleItemValue("Sensitivity", 5, engine.get(), true), 7);
    EXPECT_EQ(doc.GetSimpleItemValue("Inner", 5, engine.get(), true), 5) << "not in Parameters";
    const Node container(doc.SelectElementItemNode(engine.get(), true));
    EXPECT_EQ(doc.GetSimpleItemValue("Inner", 5, container.get(), false), 1);
}

TEST_F(ProfileDocTest, SetsSimpleItems)
{
    doc.SetSimpleItemValue("Sensitivity", 9, engine.get());
    doc.SetSimpleItemValue("DwellTime", 1, nullptr);
    doc.SetSimpleItemValue("Bare", 2, rule.get());
    EXPECT_EQ(doc.GetSimpleItemValue("Sensitivity", 0, engine.get(), true), 9);
    EXPECT_EQ(doc.GetSimpleItemValue("DwellTime", 0, rule.get(), true), 1);
    EXPECT_EQ(doc.GetSimpleItemValue("Bare", 0, rule.get(), true), 2);
    doc.SetSimpleItemValue("Inner", 6, engine.get());
    const Node container(doc.SelectElementItemNode(engine.get(), true));
    EXPECT_EQ(doc.GetSimpleItemValue("Inner", 0, container.get(), false), 1) << "not in Parameters";
    doc.SetSimpleItemValue("Inner", 6, nullptr);
    EXPECT_EQ(doc.GetSimpleItemValue("Inner", 0, container.get(), false), 6) << "anywhere in the document";
    const std::string before = doc.DumpToString();
    doc.SetSimpleItemValue("Missing", 1, nullptr);
    EXPECT_EQ(doc.DumpToString(), before);
}

TEST_F(ProfileDocTest, ReadsPoints)
{
    const std::string query = doc.ElementItemQry(true) + "/tt:Polygon/tt:Point";
    std::vector<types::Point> points(1, types::Point(9, 9));
    doc.GetPoints(points, query, rule.get());
    ASSERT_EQ(points.size(), 4U);
    EXPECT_EQ(points[1].X(), 1);
    EXPECT_EQ(points[1].Y(), 2);
    EXPECT_EQ(points[2].X(), 0);
    EXPECT_EQ(points[2].Y(), 4);
    EXPECT_EQ(points[3].X(), -5);
    EXPECT_EQ(points[3].Y(), 0);
    std::vector<types::Point> none;
    doc.GetPoints(none, doc.ElementItemQry(true) + "/tt:Line/tt:Point", rule.get());
    EXPECT_TRUE(none.empty());
}

TEST_F(ProfileDocTest, ReadsLines)
{
    const std::string query = doc.ElementItemQry(true) + "/tt:Polygon/tt:Point";
    types::Point line[2] = {types::Point(7, 7), types::Point(8, 8)};
    EXPECT_FALSE(doc.GetLine(line, query, engine.get())) << "one point";
    EXPECT_FALSE(doc.GetLine(line, "tt:None", rule.get()));
    EXPECT_EQ(line[0].X(), 7);
    EXPECT_EQ(line[1].Y(), 8);
    EXPECT_TRUE(doc.GetLine(line, query, rule.get())) << "the first two of three";
    EXPECT_EQ(line[0].X(), 1);
    EXPECT_EQ(line[1].Y(), 4);
}

TEST_F(ProfileDocTest, TakesTheNamespaceThatTheDocumentBinds)
{
    ProfileDoc other;
    ASSERT_TRUE(other.ParseString("<tt:R xmlns:tt='urn:own'><tt:Rule Type='r' Name='n'/></tt:R>"));
    const Node found(other.SelectRule("r"));
    EXPECT_NE(found, nullptr);
    ASSERT_TRUE(other.ParseString("<R><Rule Type='r' Name='n'/></R>"));
    EXPECT_EQ(other.SelectRule("r"), nullptr);
}
} // namespace
} // namespace analytics::test
