#include "RuleFixture.h"

namespace conversiontest
{
namespace
{
using profile_conversion::adaptivemotion::Rule;

class AdaptiveMotionTest : public RuleFixture<AdaptiveMotion>
{
};

TEST_F(AdaptiveMotionTest, StartsWithItsDefaults)
{
    const Rule rule;
    EXPECT_EQ(rule.Name(), "");
    EXPECT_FALSE(rule.EnableAlarm());
    EXPECT_EQ(rule.Direction(), 8);
    EXPECT_EQ(rule.Severity(), analytics::Minor);
    EXPECT_EQ(rule.DwellTime(), 5);
    EXPECT_TRUE(rule.Zone().empty());
}

TEST_F(AdaptiveMotionTest, RoiWithoutADirectionIsForAllOfThemAlsoToTheEngine)
{
    EXPECT_EQ(Read("<roi><name>n</name></roi>").Direction(), 8);
    EXPECT_EQ(config.GetRules().front()->DwellTime(), 5);
    const std::string xml = WriteEngine();
    EXPECT_EQ(TextAt(xml, "//tt:SimpleItem[@Name='Direction']/@Value"), "8");
    EXPECT_EQ(TextAt(xml, "//tt:SimpleItem[@Name='DwellTime']/@Value"), "5");
}

TEST_F(AdaptiveMotionTest, EngineRuleWithoutItemsReadsAsZeros)
{
    const Rule& rule = ReadEngine("");
    EXPECT_EQ(rule.Name(), "n");
    EXPECT_FALSE(rule.EnableAlarm());
    EXPECT_EQ(rule.Direction(), 0);
    EXPECT_EQ(rule.DwellTime(), 0);
    EXPECT_EQ(rule.Severity(), analytics::Minor);
    EXPECT_TRUE(rule.Zone().empty());
}

TEST_F(AdaptiveMotionTest, PassesAnyDirection)
{
    EXPECT_EQ(Read("<roi><direction>-17</direction></roi>").Direction(), -17);
    EXPECT_EQ(TextAt(WriteEngine(), "//tt:SimpleItem[@Name='Direction']/@Value"), "-17");
    EXPECT_EQ(ReadEngine("<tt:SimpleItem Name='Direction' Value='99'/>").Direction(), 99);
    EXPECT_EQ(TextAt(Write(), "//roi/direction"), "99");
}

TEST_F(AdaptiveMotionTest, IdleBehaviorIsAnEmptyTextAndAnActiveOneAFullDocument)
{
    profile_conversion::AdaptiveMotionConverter converter;
    EXPECT_EQ(converter.FromOnvifToVarlo(Engine(""), {}), "");
    EXPECT_EQ(Write(), "");
    config.Active(true);
    const std::string xml = Write();
    EXPECT_EQ(TextAt(xml, "behavior/@active"), "1");
    EXPECT_EQ(CountAt(xml, "behavior/rois"), 1U);
    EXPECT_EQ(CountAt(xml, "behavior/rois/roi"), 0U);
}

TEST(AdaptiveMotionConverter, IsFoundWithoutAskingThePlatform)
{
    // There is no platform here: any look-up would end the test.
    EXPECT_NE(dynamic_cast<profile_conversion::AdaptiveMotionConverter*>(
                  Converter("com.varlo.rule.adaptivemotion").get()),
              nullptr);
}
} // namespace
} // namespace conversiontest
