#include <LoiteringConfig.h>
#include <ProfileDocConverter.h>
#include <frame/BehaviorConfig.h>

#include <gtest/gtest.h>

#include <limits>

namespace
{
using profile_conversion::loitering::Config;
using profile_conversion::loitering::Rule;

TEST(AlarmSeverity, ClampsNumbers)
{
    EXPECT_EQ(analytics::SeverityFromInt(-1), analytics::Minor);
    for (int number = 0; number <= 3; ++number)
        EXPECT_EQ(analytics::SeverityFromInt(number), number);
    EXPECT_EQ(analytics::SeverityFromInt(4), analytics::Critical);
    EXPECT_EQ(analytics::SeverityFromInt(9), analytics::Critical);
    EXPECT_EQ(analytics::SeverityFromInt(std::numeric_limits<int>::max()), analytics::Critical);
    EXPECT_EQ(analytics::SeverityFromInt(std::numeric_limits<int>::min()), analytics::Minor);
}

TEST(ProfileParameters, CarriesThreeValues)
{
    profile_conversion::ProfileParameters params;
    EXPECT_EQ(params.CameraPreset(), "");
    EXPECT_EQ(params.ProfileName(), "");
    EXPECT_FALSE(params.Active());
    params.CameraPreset("p");
    params.ProfileName("n");
    params.Active(true);
    EXPECT_EQ(params.CameraPreset(), "p");
    EXPECT_EQ(params.ProfileName(), "n");
    EXPECT_TRUE(params.Active());
}

TEST(BehaviorConfig, OwnsItsRules)
{
    Config config;
    EXPECT_FALSE(config.Active());
    config.AddRule(nullptr);
    EXPECT_TRUE(config.GetRules().empty());
    config.AddRule(new Rule);
    Rule* second = new Rule;
    second->Name("second");
    config.SetRules({second, nullptr}); // the first one ends, which the address sanitizer watches
    ASSERT_EQ(config.GetRules().size(), 2U);
    EXPECT_EQ(config.GetRules()[0]->Name(), "second");
    config.DeleteAllRules();
    EXPECT_TRUE(config.GetRules().empty());
    config.AddRule(new Rule);
}

TEST(LoiteringRule, StartsWithItsDefaults)
{
    const Rule rule;
    EXPECT_EQ(rule.Name(), "");
    EXPECT_FALSE(rule.EnableAlarm());
    EXPECT_EQ(rule.Severity(), analytics::Minor);
    EXPECT_EQ(rule.DwellTime(), 5);
    EXPECT_EQ(rule.AlarmDelay(), 300);
    EXPECT_TRUE(rule.Zone().empty());
}
} // namespace
