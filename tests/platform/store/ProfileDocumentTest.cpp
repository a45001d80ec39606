#include "store/ProfileDocument.h"

#include <analytics/ProfileDoc.h>

#include <gmock/gmock.h>

#include <memory>

namespace analytics
{
namespace
{
std::string Form(const std::string& engines, const std::string& rules,
                 const std::string& space = "http://www.onvif.org/ver10/schema")
{
    return "<tt:C xmlns:tt='" + space + "'><tt:AnalyticsEngineConfiguration>" + engines +
           "</tt:AnalyticsEngineConfiguration><tt:RuleEngineConfiguration>" + rules +
           "</tt:RuleEngineConfiguration></tt:C>";
}

std::string Rule(const std::string& type, const std::string& name)
{
    return "<tt:Rule Name='" + name + "' Type='" + type + "'><tt:Parameters><tt:SimpleItem Name='N' Value='" +
           name + "'/></tt:Parameters></tt:Rule>";
}

std::string Engine(const std::string& type, int value)
{
    return "<tt:AnalyticsModule Name='m' Type='" + type + "'><tt:Parameters><tt:SimpleItem Name='V' Value='" +
           std::to_string(value) + "'/></tt:Parameters></tt:AnalyticsModule>";
}

class ProfileDocumentTest : public testing::Test
{
  protected:
    void Merge(const std::vector<StoredConfiguration>& configurations)
    {
        text = MergeProfile(configurations);
        ASSERT_TRUE(doc.ParseString(text));
    }
    std::string Rules(const std::string& id)
    {
        std::string names;
        for (DocumentNode* node : doc.SelectRules(id))
        {
            names += node->GetProperty("Name") + " ";
            delete node;
        }
        return names;
    }
    int EngineValue(const std::string& id)
    {
        const std::unique_ptr<DocumentNode> node(doc.SelectEngine(id));
        return node == nullptr ? -1 : doc.GetSimpleItemValue("V", -2, node.get(), true);
    }
    std::string text;
    ProfileDoc doc;
};

TEST_F(ProfileDocumentTest, IsEmptyWithoutConfigurations)
{
    EXPECT_EQ(MergeProfile({}), "");
    EXPECT_EQ(MergeProfile({{RulePlugin, "r", ""}, {EnginePlugin, "e", ""}}), "");
    EXPECT_EQ(MergeProfile({{RulePlugin, "r", "no XML"}}), "");
}

TEST_F(ProfileDocumentTest, HoldsTheRulesOfEachDocumentInOrder)
{
    Merge(
        {{RulePlugin, "r.one", Form("", Rule("r.one", "1") + Rule("r.two", "9") + Rule("r.one", "2")), true},
         {RulePlugin, "r.two", Form("", Rule("r.two", "3") + Rule("r.one", "8")), false}});
    EXPECT_EQ(Rules("r.one"), "1 2 ");
    EXPECT_EQ(Rules("r.two"), "3 ");
    EXPECT_TRUE(doc.RuleIsActive("r.one"));
    EXPECT_FALSE(doc.RuleIsActive("r.two"));
    EXPECT_EQ(text.find("<tt:RuleEngineConfiguration"), text.rfind("<tt:RuleEngineConfiguration"));
}

TEST_F(ProfileDocumentTest, MarksAnActiveBehaviorWithoutRules)
{
    Merge({{RulePlugin, "r.one", Form("", ""), true}, {RulePlugin, "r.two", Form("", ""), false}});
    EXPECT_TRUE(doc.RuleIsActive("r.one"));
    EXPECT_FALSE(doc.RuleIsActive("r.two"));
    EXPECT_EQ(Rules("r.one"), "");
}

TEST_F(ProfileDocumentTest, TakesEnginesFromTheirOwnConfigurationFirst)
{
    Merge({{RulePlugin, "r.one", Form(Engine("e.one", 1) + Engine("e.two", 2), ""), false},
           {RulePlugin, "r.two", Form(Engine("e.two", 3) + Engine("e.three", 4), ""), false},
           {EnginePlugin, "e.one", Form(Engine("e.other", 6) + Engine("e.one", 5), "")},
           {EnginePlugin, "e.four", Form(Engine("e.four", 7), "")}});
    EXPECT_EQ(EngineValue("e.one"), 5);
    EXPECT_EQ(EngineValue("e.two"), 2);
    EXPECT_EQ(EngineValue("e.three"), 4);
    EXPECT_EQ(EngineValue("e.four"), 7);
    EXPECT_EQ(EngineValue("e.other"), -1);
}

TEST_F(ProfileDocumentTest, PassesOverWhatIsNoXml)
{
    Merge({{RulePlugin, "r.broken", "not <xml", false},
           {RulePlugin, "r.foreign", "<behavior id='x'/>", false},
           {RulePlugin, "r.one", Form("", Rule("r.one", "1")), true},
           {EnginePlugin, "e.broken", "<"},
           {EnginePlugin, "e.one", Form(Engine("e.one", 1), "")}});
    EXPECT_EQ(Rules("r.one"), "1 ");
    EXPECT_TRUE(doc.RuleIsActive("r.one"));
    EXPECT_EQ(EngineValue("e.one"), 1);
}

TEST_F(ProfileDocumentTest, JoinsDocumentsThatBindThePrefixDifferently)
{
    Merge({{RulePlugin, "r.one", Form(Engine("e.one", 1), Rule("r.one", "1"), "urn:own"), false},
           {RulePlugin, "r.two",
            "<C xmlns='http://www.onvif.org/ver10/schema' xmlns:tt='http://www.onvif.org/ver10/schema'>"
            "<Rule Name='2' Type='r.two'/></C>",
            false}});
    EXPECT_EQ(Rules("r.one"), "1 ");
    EXPECT_EQ(Rules("r.two"), "2 ");
    EXPECT_EQ(EngineValue("e.one"), 1);
    const std::unique_ptr<DocumentNode> rule(doc.SelectRule("r.one"));
    EXPECT_EQ(doc.GetSimpleItemValue("N", 0, rule.get(), true), 1) << "what is in it as well";
    EXPECT_THAT(text, testing::Not(testing::HasSubstr("urn:own")));
}

TEST_F(ProfileDocumentTest, DeclaresItsNamespacesOnce)
{
    Merge({{RulePlugin, "r.one", Form("", Rule("r.one", "1") + Rule("r.one", "2")), true}});
    EXPECT_EQ(text.find("xmlns:tt"), text.rfind("xmlns:tt"));
    EXPECT_EQ(text.find("xmlns:va"), text.rfind("xmlns:va"));
}

TEST_F(ProfileDocumentTest, KeepsIdentifiersAndTextAsTheyAre)
{
    const std::string id = "r.<&'\"";
    Merge({{RulePlugin, id, Form("", "<tt:Rule Name='&lt;\xC3\xA9&#10;' Type='r.&lt;&amp;&apos;&quot;'/>"),
            true}});
    EXPECT_EQ(Rules(id), "<\xC3\xA9\n ");
    EXPECT_TRUE(doc.RuleIsActive(id));
}
} // namespace
} // namespace analytics
