#include "store/ProfileStore.h"

#include <analytics/Faults.h>

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

TEST_F(ProfileStoreTest, PutsSeveralConfigurationsOrNone)
{
    m_store.Create("a");
    m_store.Put(1, {{EnginePlugin, "e", "<e/>", false}, {RulePlugin, "r", "<r/>", true}});
    EXPECT_EQ(m_store.Document(1, EnginePlugin, "e"), "<e/>");
    EXPECT_EQ(m_store.Document(1, RulePlugin, "r"), "<r/>");
    const std::string large(5'000'000, 'x');
    EXPECT_EQ(FaultOf<analytics::ClientFault>(
                  [&] {
                      m_store.Put(1, {{EnginePlugin, "e", "<f/>", false}, {RulePlugin, "r", large, false}});
                  }),
              "The profile would hold more than 4194304 bytes");
    EXPECT_EQ(m_store.Document(1, EnginePlugin, "e"), "<e/>");
    EXPECT_EQ(m_store.Document(1, RulePlugin, "r"), "<r/>");
    EXPECT_EQ(m_store.Ids(1, RulePlugin, true)->size(), 1u);
}

TEST_F(ProfileStoreTest, AnalyticsRunAtFirstAndMDDoesNot)
{
    EXPECT_TRUE(m_store.IsOn(ProfileSwitch::Analytics));
    EXPECT_FALSE(m_store.IsOn(ProfileSwitch::MD));
    m_store.Switch(ProfileSwitch::Analytics, false);
    EXPECT_FALSE(m_store.IsOn(ProfileSwitch::Analytics));
    EXPECT_FALSE(m_store.IsOn(ProfileSwitch::MD));
    m_store.Switch(ProfileSwitch::MD, true);
    EXPECT_FALSE(m_store.IsOn(ProfileSwitch::Analytics));
    EXPECT_TRUE(m_store.IsOn(ProfileSwitch::MD));
}
