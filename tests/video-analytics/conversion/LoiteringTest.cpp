#include "RuleFixture.h"

namespace conversiontest
{
namespace
{
using profile_conversion::loitering::Rule;

class LoiteringTest : public RuleFixture<Loitering>
{
};

TEST_F(LoiteringTest, ReadsARoi)
{
    const Rule& rule =
        Read("<roi><vertices><vertex><y>2</y><x>1</x></vertex><vertex/><vertex><x>-3</x></vertex></vertices>"
             "<alarmDelay>7</alarmDelay><alarmSeverity>2</alarmSeverity><enable>5</enable>"
             "<dwellTime>2</dwellTime><name>N</name></roi>");
    EXPECT_EQ(rule.Name(), "N");
    EXPECT_TRUE(rule.EnableAlarm());
    EXPECT_EQ(rule.Severity(), analytics::Major);
    EXPECT_EQ(rule.DwellTime(), 2) << "below the bound, which nothing enforces";
    EXPECT_EQ(rule.AlarmDelay(), 7);
    ASSERT_EQ(rule.Zone().size(), 3U);
    EXPECT_EQ(rule.Zone()[0].X(), 1);
    EXPECT_EQ(rule.Zone()[0].Y(), 2);
    EXPECT_EQ(rule.Zone()[1].X(), 0);
    EXPECT_EQ(rule.Zone()[2].X(), -3);
    EXPECT_EQ(rule.Zone()[2].Y(), 0);
}

TEST_F(LoiteringTest, FillsWhatARoiLeavesOut)
{
    const Rule& rule = Read("<roi/>");
    EXPECT_EQ(rule.Name(), "");
    EXPECT_FALSE(rule.EnableAlarm());
    EXPECT_EQ(rule.Severity(), analytics::Minor);
    EXPECT_EQ(rule.DwellTime(), 5);
    EXPECT_EQ(rule.AlarmDelay(), 300);
    EXPECT_TRUE(rule.Zone().empty());
    EXPECT_EQ(Read("<roi><alarmSeverity>-1</alarmSeverity></roi>").Severity(), analytics::Minor);
    EXPECT_EQ(Read("<roi><alarmSeverity>9</alarmSeverity></roi>").Severity(), analytics::Critical);
}

TEST_F(LoiteringTest, FillsWhatAnEngineRuleLeavesOut)
{
    const Rule& rule = ReadEngine("");
    EXPECT_EQ(rule.Name(), "n");
    EXPECT_FALSE(rule.EnableAlarm());
    EXPECT_EQ(rule.Severity(), analytics::Minor);
    EXPECT_EQ(rule.DwellTime(), 5);
    EXPECT_EQ(rule.AlarmDelay(), 300);
}

TEST_F(LoiteringTest, ReadsAnEngineRule)
{
    const Rule& rule = ReadEngine(
        "<tt:SimpleItem Name='AlarmDelay' Value='7'/><tt:SimpleItem Name='Severity' Value='7'/>"
        "<tt:SimpleItem Name='EnableAlarm' Value='2'/><tt:SimpleItem Name='DwellTime' Value='-1'/>"
        "<tt:ElementItem><tt:Polygon><tt:Point x='1' y='2'/><tt:Point x='3'/></tt:Polygon></tt:ElementItem>");
    EXPECT_TRUE(rule.EnableAlarm());
    EXPECT_EQ(rule.Severity(), analytics::Critical);
    EXPECT_EQ(rule.DwellTime(), -1);
    EXPECT_EQ(rule.AlarmDelay(), 7);
    ASSERT_EQ(rule.Zone().size(), 2U);
    EXPECT_EQ(rule.Zone()[1].X(), 3);
}
} // namespace
} // namespace conversiontest
