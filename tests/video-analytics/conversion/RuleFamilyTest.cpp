// What the families that are rules and nothing else promise: each test once, a row per family.

#include "RuleFixture.h"

#include <analytics/ProfileDoc.h>

namespace conversiontest
{
namespace
{
using analytics::DocumentNode;
using profile_conversion::Point;
using profile_conversion::Points;

template <class FamilyT>
class RuleFamilyTest : public RuleFixture<FamilyT>
{
};
using RuleFamilies = testing::Types<Loitering, AdaptiveMotion, ObjectCounting>;
TYPED_TEST_SUITE(RuleFamilyTest, RuleFamilies);

TYPED_TEST(RuleFamilyTest, IsMadeByTheFactoryUnderBothNames)
{
    for (const std::string& id : {TypeParam::Config::Id(), TypeParam::Config::Alias()})
    {
        EXPECT_TRUE(TypeParam::Converter::CanConvert(id));
        EXPECT_NE(dynamic_cast<typename TypeParam::Converter*>(Converter(id).get()), nullptr) << id;
    }
    EXPECT_FALSE(TypeParam::Converter::CanConvert("com.varlo.rule.abandonedobject"));
}

TYPED_TEST(RuleFamilyTest, HasNoAdditionalComponent)
{
    std::string id = "as";
    std::string text = "before";
    typename TypeParam::Converter converter;
    profile_conversion::ProfileParameters params;
    EXPECT_NE(converter.FromVarloToOnvif(this->Rois("<roi/>"), params), "");
    EXPECT_FALSE(converter.AdditionalComponent(id, text));
    EXPECT_EQ(id + text, "asbefore");
}

TYPED_TEST(RuleFamilyTest, WritesTwoPointsAsALineIfThatIsPossible)
{
    const struct
    {
        Points zone;
        bool line;
    } cases[] = {{{{1, 2}}, false}, {{{1, 2}, {3, 4}}, TypeParam::kLinePossible}, {Points(3), false}};
    for (const auto& c : cases)
    {
        this->config.DeleteAllRules();
        auto* rule = new typename TypeParam::Config::RuleType;
        rule->Zone(c.zone);
        this->config.AddRule(rule);
        const std::string xml = this->WriteEngine();
        const std::string item = "//tt:Rule/tt:Parameters/tt:ElementItem";
        EXPECT_EQ(CountAt(xml, item + "/tt:Line/tt:Point"), c.line ? c.zone.size() : 0U);
        EXPECT_EQ(CountAt(xml, item + "/tt:Polygon/tt:Point"), c.line ? 0U : c.zone.size());
        typename TypeParam::Config back;
        ASSERT_TRUE(typename TypeParam::OnvifDoc().DocToConfig(xml, back));
        ASSERT_EQ(back.GetRules().size(), 1U);
        ASSERT_EQ(back.GetRules()[0]->Zone().size(), c.zone.size());
        EXPECT_EQ(back.GetRules()[0]->Zone().back().Y(), c.zone.back().Y());
    }
}

TYPED_TEST(RuleFamilyTest, LooksForALineIfThatIsPossibleAndThereIsNoPolygon)
{
    const std::string line =
        "<tt:ElementItem><tt:Line><tt:Point x='1' y='2'/><tt:Point x='3' y='4'/></tt:Line></tt:ElementItem>";
    const std::string polygon = "<tt:ElementItem><tt:Polygon><tt:Point x='7'/></tt:Polygon></tt:ElementItem>";
    EXPECT_EQ(this->ReadEngine(line).Zone().size(), TypeParam::kLinePossible ? 2U : 0U);
    const Points& zone = this->ReadEngine(line + polygon).Zone();
    ASSERT_EQ(zone.size(), 1U);
    EXPECT_EQ(zone[0].X(), 7);
}

TYPED_TEST(RuleFamilyTest, LeavesTheTextAloneOnFailure)
{
    std::string xml = "before";
    this->config.Active(true);
    this->platform.Of(TypeParam::Config::Id()).engineDocument = "";
    EXPECT_FALSE(typename TypeParam::OnvifDoc().ConfigToDoc(this->config, xml));
    this->platform.Of(TypeParam::Config::Id()).fields.alias = "urn:other";
    EXPECT_FALSE(typename TypeParam::VarloDoc().ConfigToDoc(this->config, xml));
    EXPECT_EQ(xml, "before");
}

TYPED_TEST(RuleFamilyTest, DoesNothingWithoutNodes)
{
    analytics::Document doc;
    analytics::ProfileDoc engine;
    ASSERT_TRUE(doc.ParseString("<a/>"));
    const std::unique_ptr<DocumentNode> node(doc.SelectNode("a", nullptr));
    typename TypeParam::Config::RuleType rule;
    typename TypeParam::VarloDoc varlo;
    typename TypeParam::OnvifDoc onvif;
    EXPECT_EQ(varlo.NodeToRule(nullptr, &doc), nullptr);
    EXPECT_EQ(varlo.NodeToRule(node.get(), nullptr), nullptr);
    EXPECT_EQ(onvif.RuleFromNode(nullptr, &engine), nullptr);
    EXPECT_EQ(onvif.RuleFromNode(node.get(), nullptr), nullptr);
    varlo.AddRuleNode(&rule, nullptr);
    varlo.AddRuleNode(nullptr, node.get());
    onvif.AddRuleNode(&rule, nullptr);
    onvif.AddRuleNode(nullptr, node.get());
    varlo.AddPointsNodes({}, node.get());
    varlo.AddPointsNodes({{1, 2}}, nullptr);
    Point point(3, 4);
    varlo.NodeToPoint(point, nullptr, &doc);
    varlo.NodeToPoint(point, node.get(), &doc);
    EXPECT_EQ(point.X(), 3);
    EXPECT_EQ(point.Y(), 4);
    EXPECT_EQ(node->DumpToString(), "<a/>");
}

TYPED_TEST(RuleFamilyTest, NamesBothIdentifiersInItsQuery)
{
    EXPECT_EQ(typename TypeParam::VarloDoc().BehaviorNodeQry(), "//behavior[@id='" + TypeParam::Config::Id() +
                                                                    "' or @id='" +
                                                                    TypeParam::Config::Alias() + "']");
}
} // namespace
} // namespace conversiontest
