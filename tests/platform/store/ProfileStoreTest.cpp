#include "store/ProfileStore.h"

#include "platform/PlatformTest.h"

using analytics::EnginePlugin;
using analytics::ProfileStore;
using analytics::ProfileSwitch;
using analytics::RulePlugin;

class ProfileStoreTest : public PlatformTest
{
  protected:
    ProfileStore m_store{Path("state")};
};

TEST_F(ProfileStoreTest, GivesAllOfAProfileInOneReading)
{
    m_store.Create("a");
    m_store.Create("b");
    m_store.Put(1, {RulePlugin, "r2", "<r2/>", false});
    m_store.Put(1, {EnginePlugin, "e", "<e/>", false});
    m_store.Put(1, {RulePlugin, "r1", "<r1/>", true});
    m_store.Put(2, {RulePlugin, "r3", "<r3/>", true});
    const auto all = m_store.Configurations(1);
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0].kind, EnginePlugin);
    EXPECT_EQ(all[0].id, "e");
    EXPECT_EQ(all[0].document, "<e/>");
    EXPECT_EQ(all[1].kind, RulePlugin);
    EXPECT_EQ(all[1].id, "r1");
    EXPECT_TRUE(all[1].active);
    EXPECT_EQ(all[2].id, "r2");
    EXPECT_FALSE(all[2].active);
    EXPECT_TRUE(m_store.Configurations(3).empty());
    m_store.Delete(1);
    EXPECT_TRUE(m_store.Configurations(1).empty());
    EXPECT_EQ(m_store.Configurations(2).size(), 1u);
}

TEST_F(ProfileStoreTest, AnalyticsRunAtFirstAndMDDoesNot)
{
    EXPECT_TRUE(m_store.On(ProfileSwitch::kAnalytics));
    EXPECT_FALSE(m_store.On(ProfileSwitch::kMD));
    m_store.Switch(ProfileSwitch::kAnalytics, false);
    EXPECT_FALSE(m_store.On(ProfileSwitch::kAnalytics));
    EXPECT_FALSE(m_store.On(ProfileSwitch::kMD));
    m_store.Switch(ProfileSwitch::kMD, true);
    EXPECT_FALSE(m_store.On(ProfileSwitch::kAnalytics));
    EXPECT_TRUE(m_store.On(ProfileSwitch::kMD));
}
