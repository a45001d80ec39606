// What every family promises: each test once, a row per family.

#include "Families.h"

#include <ProfileDocConverter.h>

#include <gtest/gtest.h>

namespace conversiontest
{
namespace
{
using profile_conversion::ProfileParameters;

class FamilyTest : public testing::TestWithParam<Family>
{
  protected:
    std::string Behavior(const std::string& id, const std::string& active, const std::string& content)
    {
        return "<behavior id='" + id + "' active='" + active + "'>" + content + "</behavior>";
    }
    // The engine document that a behavior document gives.
    std::string Convert(const std::string& xml)
    {
        return Converter(family.id)->FromVarloToOnvif(xml, params);
    }
    std::string ConvertBack(const std::string& xml)
    {
        return Converter(family.id)->FromOnvifToVarlo(xml, {});
    }
    // The text of the first match in a behavior document.
    std::string Text(const std::string& xml, const std::string& query)
    {
        EXPECT_TRUE(analytics::Document().ParseString(xml)) << xml;
        return TextAt(xml, query);
    }

    Plugins platform;
    const Family family = GetParam();
    ProfileParameters params;
};

class ZoneFamilyTest : public FamilyTest
{
};

TEST_P(FamilyTest, IsFoundByBothOfItsNames)
{
    EXPECT_NE(Converter(family.id), nullptr);
    EXPECT_NE(Converter(family.alias), nullptr);
    platform.Of(family.id).fields.alias = "urn:other";
    EXPECT_EQ(Converter(family.alias), nullptr) << "the alias is the plug-in's, not ours";
    EXPECT_NE(Converter("urn:other"), nullptr);
    EXPECT_EQ(Converter(std::string(family.id) + "x"), nullptr);
}

TEST_P(FamilyTest, RefusesWhatIsNoBehaviorOfItsOwn)
{
    for (const std::string& xml : {std::string(), std::string("no XML"), std::string("<behavior"),
                                   std::string("<other/>"), Behavior("urn:another", "1", "<rois/>"),
                                   Behavior("", "1", ""), std::string("<behavior active='1'/>")})
    {
        EXPECT_EQ(Convert(xml), "") << xml;
        EXPECT_FALSE(params.Active()) << xml;
    }
    for (const Family& other : Families())
        for (const std::string& id : {other.id, other.alias})
            EXPECT_EQ(Convert(Behavior(id, "1", "")).empty(), other.id != family.id) << id;
}

TEST_P(FamilyTest, TakesEitherIdentifierAndWritesTheAlias)
{
    for (const std::string& id : {family.id, family.alias})
    {
        const std::string engine = Convert(Behavior(id, "1", "<rois><roi><name>x</name></roi></rois>"));
        ASSERT_NE(engine, "") << id;
        EXPECT_EQ(Text(ConvertBack(engine), "behavior/@id"), family.alias);
    }
}

TEST_P(FamilyTest, TakesTheActiveFlagFromTheDocument)
{
    const struct
    {
        const char* text;
        bool active;
    } cases[] = {{"0", false}, {"1", true},    {"7", true},  {"-1", true},
                 {"", false},  {"yes", false}, {" 1 ", true}};
    for (const auto& c : cases)
    {
        params.Active(!c.active);
        Convert(Behavior(family.id, c.text, "<rois/>"));
        EXPECT_EQ(params.Active(), c.active) << '"' << c.text << '"';
    }
    params.Active(true);
    Convert("<behavior id='" + std::string(family.id) + "'/>");
    EXPECT_FALSE(params.Active()) << "without the attribute";
}

TEST_P(FamilyTest, FindsTheBehaviorAtAnyDepth)
{
    EXPECT_NE(Convert("<?xml version='1.0'?><a><b>" + Behavior(family.id, "1", "") + "</b></a>"), "");
    EXPECT_TRUE(params.Active());
}

TEST_P(FamilyTest, GivesNothingWithoutAUsableDefaultConfiguration)
{
    const std::string document = Behavior(family.id, "1", "<rois><roi/></rois>");
    for (const char* text : {"", "no XML"})
    {
        platform.Of(family.id).engineDocument = text;
        params.Active(false);
        EXPECT_EQ(Convert(document), "") << text;
        EXPECT_TRUE(params.Active()) << "the behavior document was read";
    }
}

TEST_P(ZoneFamilyTest, GivesNothingWithoutAContainerForRules)
{
    for (const char* text : {"<tt:Other xmlns:tt='urn:t'/>", "<tt:RuleEngineConfiguration/>"})
    {
        platform.Of(family.id).engineDocument = text;
        params.Active(false);
        EXPECT_EQ(Convert(Behavior(family.id, "1", "<rois><roi/></rois>")), "") << text;
        EXPECT_TRUE(params.Active()) << "the behavior document was read";
    }
}

TEST_P(ZoneFamilyTest, ReplacesTheDefaultRulesOfItsType)
{
    platform.Of(family.id).engineDocument =
        "<tt:C xmlns:tt='urn:t'><tt:RuleEngineConfiguration><tt:Rule Name='default' Type='" +
        std::string(family.id) + "'/><tt:Rule Name='other' Type='r'/></tt:RuleEngineConfiguration></tt:C>";
    const std::string engine = Convert(Behavior(family.id, "1", "<rois><roi><name>mine</name></roi></rois>"));
    EXPECT_EQ(engine.find("\"default\""), std::string::npos);
    EXPECT_NE(engine.find("\"other\""), std::string::npos);
    EXPECT_NE(engine.find("\"mine\""), std::string::npos);
}

TEST_P(ZoneFamilyTest, KeepsOrderAndRepeatedAndEmptyNames)
{
    const std::string engine = Convert(Behavior(
        family.id, "0",
        "<rois><roi><name>b</name></roi><roi/><roi><name>a</name></roi><roi><name>b</name></roi></rois>"));
    const std::string back = ConvertBack(engine);
    EXPECT_EQ(Text(back, "//roi[1]/name"), "b");
    EXPECT_EQ(Text(back, "//roi[2]/name"), "");
    EXPECT_EQ(Text(back, "//roi[3]/name"), "a");
    EXPECT_EQ(Text(back, "//roi[4]/name"), "b");
    EXPECT_EQ(Text(back, "//roi[5]/name"), "");
    EXPECT_EQ(Text(back, "//roi[2]/vertices"), "");
    EXPECT_EQ(Text(back, "behavior/@active"), "0");
}

TEST_P(ZoneFamilyTest, KeepsAnyText)
{
    const std::string name = "<Tür> & \"Tor\" 'x' \xF0\x9F\x98\x80 ]]>";
    const std::string engine = Convert(Behavior(
        family.id, "0", "<rois><roi><name>&lt;Tür> &amp; \"Tor\" 'x' &#x1F600; ]]&gt;</name></roi></rois>"));
    EXPECT_EQ(Text(ConvertBack(engine), "//roi/name"), name);
}

TEST_P(ZoneFamilyTest, WritesAnIdleBehaviorAsItsTableSays)
{
    const std::string back = ConvertBack("<tt:C xmlns:tt='urn:t'/>");
    if (family.emptyWhenIdle)
    {
        EXPECT_EQ(back, "");
        return;
    }
    EXPECT_EQ(Text(back, "//roi"), "");
    EXPECT_EQ(Text(back, "behavior/@active"), "0");
    EXPECT_TRUE(back.starts_with("<?xml")) << "the requests remove the declaration";
}

TEST_P(ZoneFamilyTest, WritesAnActiveBehaviorWithoutRules)
{
    const std::string back =
        ConvertBack("<va:ActiveRule xmlns:va='urn:varlo-com:analytics:engine-document:1' Type='" +
                    std::string(family.id) + "'/>");
    EXPECT_EQ(Text(back, "behavior/@active"), "1");
    EXPECT_EQ(Text(back, "//roi"), "");
}

TEST_P(FamilyTest, TakesTheNearestSeverity)
{
    const struct
    {
        const char* text;
        const char* severity;
    } cases[] = {{"-1", "0"}, {"0", "0"},  {"3", "3"}, {"4", "3"},  {"7", "3"},
                 {"9", "3"},  {"12", "3"}, {"", "0"},  {"no", "0"}, {"-99999999999", "0"}};
    for (const auto& c : cases)
    {
        const std::string child = std::string("<alarmSeverity>") + c.text + "</alarmSeverity>";
        const std::string engine =
            Convert(Behavior(family.id, "1", family.zones ? "<rois><roi>" + child + "</roi></rois>" : child));
        EXPECT_EQ(TextAt(engine, "//tt:Rule/tt:Parameters/tt:SimpleItem[@Name='Severity']/@Value"),
                  c.severity)
            << c.text;
        EXPECT_EQ(Text(ConvertBack(engine), "//alarmSeverity"), c.severity) << c.text;
    }
}

TEST_P(FamilyTest, NeedsAnEngineDocumentToReadFrom)
{
    EXPECT_EQ(ConvertBack(""), "");
    EXPECT_EQ(ConvertBack("<tt:C"), "");
}

TEST_P(FamilyTest, WritesNothingIfThePluginHasAnotherAlias)
{
    const std::string engine = Convert(Behavior(family.id, "1", "<rois><roi/></rois>"));
    ASSERT_NE(engine, "");
    platform.Of(family.id).fields.alias = "urn:other";
    EXPECT_EQ(ConvertBack(engine), "") << "the template's id is then no name of the behavior";
}

INSTANTIATE_TEST_SUITE_P(All, FamilyTest, testing::ValuesIn(Families()),
                         [](const auto& row) { return std::string(row.param.name); });
INSTANTIATE_TEST_SUITE_P(All, ZoneFamilyTest, testing::ValuesIn(ZoneFamilies()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(FamilyTest, KnowsNoOtherIdentifier)
{
    const Plugins platform;
    for (const char* id :
         {"com.varlo.rule.unknown", "com.varlo.rule.", "urn:varlo-com:AlgorithmId:Unknown:1", "x"})
        EXPECT_EQ(Converter(id), nullptr) << id;
}
} // namespace
} // namespace conversiontest
