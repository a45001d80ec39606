#include <OnvifDoc.h>

#include "Families.h"

#include <gtest/gtest.h>

namespace
{
using analytics::DocumentNode;
using profile_conversion::Points;

class OnvifDocTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        ASSERT_TRUE(doc.ParseString("<tt:P xmlns:tt='urn:t'/>"));
        parent.reset(doc.SelectNode("tt:P", nullptr));
    }
    // What was written, without the root.
    std::string Written()
    {
        const std::string text = parent->DumpToString();
        const std::string begin = "<tt:P xmlns:tt=\"urn:t\">";
        return text.starts_with(begin) ? text.substr(begin.size(), text.size() - begin.size() - 7) : "";
    }
    profile_conversion::OnvifDoc writer;
    analytics::Document doc;
    std::unique_ptr<DocumentNode> parent;
    const Points one = {{1, 2}};
    const Points two = {{1, 2}, {3, 4}};
    const Points three = {{1, 2}, {3, 4}, {-5, 6}};
};

TEST_F(OnvifDocTest, WritesPoints)
{
    writer.AddPointNode(parent.get(), {7, -8});
    EXPECT_EQ(Written(), "<tt:Point x=\"7\" y=\"-8\"/>");
}

TEST_F(OnvifDocTest, WritesNameBeforeValue)
{
    writer.AddSimpleItemNode(parent.get(), "DwellTime", 5);
    EXPECT_EQ(Written(), "<tt:SimpleItem Name=\"DwellTime\" Value=\"5\"/>");
}

TEST_F(OnvifDocTest, WritesATextAsTheAttributeOfThatName)
{
    writer.AddSimpleItemNode(parent.get(), "Unit", "cm");
    EXPECT_EQ(Written(), "<tt:SimpleItem Unit=\"cm\"/>");
}

TEST_F(OnvifDocTest, ChoosesTheShape)
{
    const std::string points2 = "<tt:Point x=\"1\" y=\"2\"/><tt:Point x=\"3\" y=\"4\"/>";
    const struct
    {
        const Points& points;
        bool linePossible;
        std::string shape;
    } cases[] = {
        {one, true, "Polygon"}, {two, true, "Line"}, {three, true, "Polygon"}, {two, false, "Polygon"}};
    for (const auto& c : cases)
    {
        SetUp();
        writer.AddPolygonOrLineNode(parent.get(), "", c.points, c.linePossible, false);
        EXPECT_TRUE(Written().starts_with("<tt:" + c.shape + "><tt:Point x=\"1\" y=\"2\"/>")) << Written();
        EXPECT_TRUE(Written().ends_with("</tt:" + c.shape + ">")) << Written();
    }
    SetUp();
    writer.AddPolygonOrLineNode(parent.get(), "", two, false, true);
    EXPECT_EQ(Written(), "<tt:ElementItem><tt:Polygon>" + points2 + "</tt:Polygon></tt:ElementItem>");
}

TEST_F(OnvifDocTest, NamesTheShapeOnly)
{
    writer.AddPolygonOrLineNode(parent.get(), "Zone", one, false, true);
    EXPECT_EQ(Written(), "<tt:ElementItem><tt:Polygon Name=\"Zone\"><tt:Point x=\"1\" y=\"2\"/></tt:Polygon>"
                         "</tt:ElementItem>");
}

TEST_F(OnvifDocTest, WritesNothingForAnEmptyZone)
{
    writer.AddPolygonOrLineNode(parent.get(), "Zone", {}, true, true);
    writer.AddPolygonOrLineNode(parent.get(), "Zone", {}, false, false);
    EXPECT_EQ(Written(), "");
}

TEST_F(OnvifDocTest, WritesRulesAndElementItems)
{
    const std::unique_ptr<DocumentNode> rule(writer.AddRule(parent.get(), "", "type"));
    ASSERT_NE(rule, nullptr);
    const std::unique_ptr<DocumentNode> item(writer.AddElementItem(rule.get(), "Name", "a & b"));
    ASSERT_NE(item, nullptr);
    writer.AddPointNode(item.get(), {1, 2});
    EXPECT_EQ(Written(), "<tt:Rule Name=\"\" Type=\"type\"><tt:ElementItem Name=\"a &amp; b\">"
                         "<tt:Point x=\"1\" y=\"2\"/></tt:ElementItem></tt:Rule>");
}

TEST_F(OnvifDocTest, DoesNothingWithoutAParent)
{
    writer.AddPointNode(nullptr, {1, 2});
    writer.AddSimpleItemNode(nullptr, "a", 1);
    writer.AddSimpleItemNode(nullptr, "a", "b");
    writer.AddPolygonOrLineNode(nullptr, "a", three, true, true);
    EXPECT_EQ(Written(), "");
}
} // namespace
