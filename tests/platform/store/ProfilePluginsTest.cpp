// What the ProfileManager asks of the installed plug-ins.

#include "platform/store/StoreFixture.h"

using testing::ElementsAre;
using testing::HasSubstr;

class ProfilePluginsTest : public StoreFixture
{
  protected:
    ProfilePluginsTest()
    {
        WritePlugin("r1", "rule", 30, {"e1"});
        WritePlugin("r2", "rule", 30, {"e1"});
        WritePlugin("r3", "rule", 20, {"urn:e2", "e1"});
        WritePlugin("e1", "engine", 40, {});
        WritePlugin("e2", "engine", 30, {});
        Create();
    }
    void WritePlugin(const std::string& id, const std::string& type, int cost,
                     const std::vector<std::string>& needs)
    {
        std::string text = "<manifest type='" + type + "'><id>" + id + "</id><alias>urn:" + id +
                           "</alias><resourceRequirement>" + std::to_string(cost) +
                           "</resourceRequirement><dependencies>";
        for (const std::string& need : needs)
            text += "<id>" + need + "</id>";
        Write("plugins/" + id + "/manifest.xml", text + "</dependencies></manifest>");
    }
};

TEST_F(ProfilePluginsTest, AddsARuleWithItsDefaultConfigurationNotActive)
{
    Write("plugins/r1/engine.xml", "<r1/>");
    EXPECT_TRUE(m_manager->AddRule(1, "r1"));
    EXPECT_EQ(RuleConfig(1, "r1"), "<r1/>");
    EXPECT_THAT(ActiveRules(1), ElementsAre());
    m_manager->SetRuleConfig(1, "r1", "<mine/>", true);
    EXPECT_EQ(ClientFaultOf([&] { m_manager->AddRule(1, "r1"); }), "Profile 1 has the behavior r1 already");
    EXPECT_EQ(RuleConfig(1, "r1"), "<mine/>");
    EXPECT_THAT(ActiveRules(1), ElementsAre("r1"));
}

TEST_F(ProfilePluginsTest, AddsAnEngineWithItsDefaultConfiguration)
{
    Write("plugins/e1/engine.xml", "<e1/>");
    EXPECT_TRUE(m_manager->AddEngine(1, "e1"));
    EXPECT_EQ(EngineConfig(1, "e1"), "<e1/>");
    std::vector<std::string> engines;
    EXPECT_TRUE(m_manager->GetEngines(1, engines));
    EXPECT_THAT(engines, ElementsAre("e1"));
    EXPECT_EQ(ClientFaultOf([&] { m_manager->AddEngine(1, "e1"); }), "Profile 1 has the engine e1 already");
}

TEST_F(ProfilePluginsTest, RefusesToAddWhatIsNotInstalled)
{
    EXPECT_EQ(ClientFaultOf([&] { m_manager->AddRule(1, "r9"); }), "There is no behavior r9 on this camera");
    EXPECT_EQ(ClientFaultOf([&] { m_manager->AddRule(1, "e1"); }), "There is no behavior e1 on this camera");
    EXPECT_EQ(ClientFaultOf([&] { m_manager->AddEngine(1, "r1"); }), "There is no engine r1 on this camera");
    EXPECT_THAT(AnalyticsFaultOf([&] { m_manager->AddRule(1, "r1"); }),
                HasSubstr("no default configuration"));
}

TEST_F(ProfilePluginsTest, CountsEachPluginOnceAgainstTheBudget)
{
    EXPECT_TRUE(m_manager->HasEnoughResource(1, "r1"));
    EXPECT_TRUE(m_manager->HasEnoughResource(1, "r3")); // 20 + 30 + 40
    m_manager->SetRuleConfig(1, "r1", "<r/>", true);
    EXPECT_TRUE(m_manager->HasEnoughResource(1, "r1"));  // 70, itself
    EXPECT_TRUE(m_manager->HasEnoughResource(1, "r2"));  // 100
    EXPECT_FALSE(m_manager->HasEnoughResource(1, "r3")); // 120
    Write("settings.xml", "<settings><maxResource>120</maxResource></settings>");
    EXPECT_TRUE(m_manager->HasEnoughResource(1, "r3"));
    m_manager->SetRuleConfig(1, "r1", "<r/>", false);
    Write("settings.xml", "<settings><maxResource>89</maxResource></settings>");
    EXPECT_FALSE(m_manager->HasEnoughResource(1, "r3"));
    EXPECT_EQ(ClientFaultOf([&] { m_manager->HasEnoughResource(1, "e1"); }),
              "There is no behavior e1 on this camera");
}
