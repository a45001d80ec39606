#include "platform/store/StoreFixture.h"

#include <limits>

using testing::ElementsAre;
using testing::IsEmpty;

class ProfileManagerTest : public StoreFixture
{
};

TEST_F(ProfileManagerTest, CountsIdentifiersFromOneAndNeverUsesOneAgain)
{
    EXPECT_EQ(Create("a"), 1);
    EXPECT_EQ(Create("b"), 2);
    EXPECT_EQ(Create("c"), 3);
    EXPECT_TRUE(m_manager->DeleteProfile(3));
    EXPECT_EQ(Create("d"), 4);
    for (const int id : {1, 2, 4})
        m_manager->DeleteProfile(id);
    Reopen();
    EXPECT_EQ(Create("e"), 5);
}

TEST_F(ProfileManagerTest, NamesMayBeEmptyAndAlike)
{
    Create("");
    Create("same");
    Create("same");
    EXPECT_THAT(Names(), ElementsAre("", "same", "same"));
}

TEST_F(ProfileManagerTest, ListsInTheOrderOfCreation)
{
    EXPECT_THAT(List(), IsEmpty());
    Create("z");
    Create("a");
    Create("m");
    m_manager->SetProfileName(1, "zz");
    m_manager->ExecuteProfile(2);
    m_manager->SetCameraPreset(3, "home");
    const auto list = List();
    ASSERT_EQ(list.size(), 3u);
    EXPECT_THAT(Names(), ElementsAre("zz", "a", "m"));
    EXPECT_EQ(list[1].id, 2);
    EXPECT_FALSE(list[0].active);
    EXPECT_TRUE(list[1].active);
    EXPECT_EQ(list[0].preset, "");
    EXPECT_EQ(list[2].preset, "home");
}

TEST_F(ProfileManagerTest, ARefusedNameLeavesTheIdentifierAlone)
{
    int id = -1;
    EXPECT_EQ(ClientFaultOf([&] { m_manager->CreateProfile(id, std::string(256, 'n')); }),
              "The profile name is longer than 255 bytes");
    EXPECT_EQ(ClientFaultOf([&] { m_manager->CreateProfile(id, "a\x01"); }),
              "The profile name holds a character that XML does not allow");
    EXPECT_EQ(id, -1);
    EXPECT_THAT(List(), IsEmpty());
    EXPECT_EQ(Create(std::string(255, 'n')), 1);
}

// ---- A profile that does not exist ----

TEST_F(ProfileManagerTest, EveryChangeNamesAProfileThatDoesNotExist)
{
    Create();
    m_manager->DeleteProfile(1);
    const std::string big(300, 'x');
    for (const int id : {0, 1, 2, -2, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
    {
        const std::vector<std::function<void()>> operations = {
            [&] { m_manager->DeleteProfile(id); },
            [&] { m_manager->ExecuteProfile(id); },
            [&] { m_manager->StopProfile(id); },
            [&] { m_manager->DeleteRule(id, "r"); },
            [&] { m_manager->DeleteEngine(id, "e"); },
            [&] { m_manager->SetRuleConfig(id, "r", "<c/>", true); },
            [&] { m_manager->SetRuleConfig(id, "r", "", true); },
            [&] { m_manager->SetEngineConfig(id, "e", "<c/>"); },
            [&] { m_manager->SetEngineConfig(id, "e", ""); },
            [&] { m_manager->SetEngineConfig(id, "e", "<c/>", "n", "p"); },
            [&] { m_manager->SetEngineConfig(id, "e", "", "n", "p"); },
            [&] { m_manager->SetEngineConfig(id, "e", "<c/>", big, big); },
            [&] { m_manager->SetProfileName(id, "n"); },
            [&] { m_manager->SetProfileName(id, big); },
            [&] { m_manager->SetCameraPreset(id, "p"); },
            [&] { m_manager->SetCameraPreset(id, big); },
            [&] { m_manager->AddRule(id, "r"); },
            [&] { m_manager->AddEngine(id, "e"); },
            [&] { m_manager->HasEnoughResource(id, "r"); },
        };
        for (std::size_t i = 0; i < operations.size(); ++i)
            EXPECT_EQ(ClientFaultOf(operations[i]), "Profile " + std::to_string(id) + " does not exist") << i;
    }
}

TEST_F(ProfileManagerTest, AskingAfterAProfileThatDoesNotExistGivesNothing)
{
    std::vector<std::string> ids = {"kept"};
    std::string config = "kept";
    EXPECT_EQ(m_manager->GetProfileName(7), "");
    EXPECT_EQ(m_manager->GetCameraPreset(7), "");
    EXPECT_FALSE(m_manager->GetRules(7, ids));
    EXPECT_FALSE(m_manager->GetActiveRules(7, ids));
    EXPECT_FALSE(m_manager->GetEngines(7, ids));
    EXPECT_FALSE(m_manager->GetRuleConfig(7, "r", config));
    EXPECT_FALSE(m_manager->GetEngineConfig(7, "e", config));
    EXPECT_THAT(ids, ElementsAre("kept"));
    EXPECT_EQ(config, "kept");
}

// ---- The active profile ----

TEST_F(ProfileManagerTest, NoneIsActiveAtFirst)
{
    Create();
    int id = -1;
    EXPECT_TRUE(m_manager->GetActiveProfile(id));
    EXPECT_EQ(id, -1);
}

TEST_F(ProfileManagerTest, RunsOneProfileAtATimeAlsoAfterARestart)
{
    Create();
    Create();
    EXPECT_TRUE(m_manager->ExecuteProfile(1));
    EXPECT_TRUE(m_manager->ExecuteProfile(2));
    EXPECT_TRUE(m_manager->ExecuteProfile(2));
    EXPECT_EQ(Active(), 2);
    Reopen();
    EXPECT_EQ(Active(), 2);
}

TEST_F(ProfileManagerTest, StopsTheActiveProfileAndIsTrueForOthers)
{
    Create();
    Create();
    m_manager->ExecuteProfile(1);
    EXPECT_TRUE(m_manager->StopProfile(2));
    EXPECT_EQ(Active(), 1);
    EXPECT_TRUE(m_manager->StopProfile(1));
    EXPECT_EQ(Active(), -1);
    EXPECT_TRUE(m_manager->StopProfile(1));
}

TEST_F(ProfileManagerTest, MinusOneStopsWhicheverIsActive)
{
    EXPECT_TRUE(m_manager->StopProfile(analytics::ProfileManager::INVALID_PROFILE_ID));
    Create();
    m_manager->ExecuteProfile(1);
    EXPECT_TRUE(m_manager->StopProfile(-1));
    EXPECT_EQ(Active(), -1);
    EXPECT_TRUE(m_manager->StopProfile(-1));
    Reopen();
    EXPECT_EQ(Active(), -1);
}

TEST_F(ProfileManagerTest, DeletingTheActiveProfileStopsIt)
{
    Create();
    Create();
    m_manager->ExecuteProfile(1);
    EXPECT_TRUE(m_manager->DeleteProfile(1));
    EXPECT_EQ(Active(), -1);
    EXPECT_EQ(List().size(), 1u);
}

// ---- Rules and engines ----

TEST_F(ProfileManagerTest, StoresAndReplacesRules)
{
    Create();
    EXPECT_TRUE(m_manager->SetRuleConfig(1, "b", "<b/>", true));
    EXPECT_TRUE(m_manager->SetRuleConfig(1, "a", "<a/>", true));
    EXPECT_TRUE(m_manager->SetRuleConfig(1, "c", "<c/>", false));
    EXPECT_TRUE(m_manager->SetRuleConfig(1, "B", "<B/>", true));
    EXPECT_THAT(ActiveRules(1), ElementsAre("B", "a", "b"));
    EXPECT_TRUE(m_manager->SetRuleConfig(1, "a", "<a2/>", false));
    EXPECT_TRUE(m_manager->SetRuleConfig(1, "c", "<c/>", true));
    EXPECT_THAT(ActiveRules(1), ElementsAre("B", "b", "c"));
    std::vector<std::string> rules = {"gone"};
    EXPECT_TRUE(m_manager->GetRules(1, rules));
    EXPECT_THAT(rules, ElementsAre("B", "a", "b", "c"));
    Reopen();
    EXPECT_EQ(RuleConfig(1, "a"), "<a2/>");
    EXPECT_EQ(RuleConfig(1, "b"), "<b/>");
    EXPECT_EQ(RuleConfig(1, "d"), "(none)");
}

TEST_F(ProfileManagerTest, ARuleAndAnEngineOfOneNameAreTwoThings)
{
    Create();
    m_manager->SetRuleConfig(1, "x", "<rule/>", true);
    m_manager->SetEngineConfig(1, "x", "<engine/>");
    EXPECT_EQ(RuleConfig(1, "x"), "<rule/>");
    EXPECT_EQ(EngineConfig(1, "x"), "<engine/>");
    EXPECT_TRUE(m_manager->DeleteRule(1, "x"));
    EXPECT_EQ(EngineConfig(1, "x"), "<engine/>");
}

TEST_F(ProfileManagerTest, AnEmptyBehaviorDocumentIsRefusedAndNothingStored)
{
    Create();
    m_manager->SetRuleConfig(1, "r", "<r/>", true);
    for (const bool active : {true, false})
        EXPECT_EQ(ClientFaultOf([&] { m_manager->SetRuleConfig(1, "r", "", active); }),
                  "The behavior document could not be read");
    EXPECT_EQ(RuleConfig(1, "r"), "<r/>");
    EXPECT_THAT(ActiveRules(1), ElementsAre("r"));
}

TEST_F(ProfileManagerTest, AnEmptySceneIsRefusedOrFalseAndNothingStored)
{
    Create("name");
    m_manager->SetEngineConfig(1, "e", "<e/>");
    EXPECT_FALSE(m_manager->SetEngineConfig(1, "e", ""));
    EXPECT_EQ(ClientFaultOf([&] { m_manager->SetEngineConfig(1, "e", "", "new", "preset"); }),
              "The scene document could not be read");
    EXPECT_EQ(EngineConfig(1, "e"), "<e/>");
    EXPECT_EQ(m_manager->GetProfileName(1), "name");
    EXPECT_EQ(m_manager->GetCameraPreset(1), "");
}

TEST_F(ProfileManagerTest, ASceneBringsNameAndPresetAndAnEmptyOneKeepsThem)
{
    Create("first");
    EXPECT_TRUE(m_manager->SetEngineConfig(1, "e", "<1/>", "second", "preset"));
    EXPECT_TRUE(m_manager->SetEngineConfig(1, "e", "<2/>", "", ""));
    EXPECT_EQ(m_manager->GetProfileName(1), "second");
    EXPECT_EQ(m_manager->GetCameraPreset(1), "preset");
    EXPECT_EQ(EngineConfig(1, "e"), "<2/>");
    EXPECT_TRUE(m_manager->SetEngineConfig(1, "e", "<3/>", "third", ""));
    EXPECT_EQ(m_manager->GetProfileName(1), "third");
    EXPECT_EQ(m_manager->GetCameraPreset(1), "preset");
}

TEST_F(ProfileManagerTest, ANameThatComesWithASceneIsHeldToTheSame)
{
    Create("name");
    const std::string longText(256, 'x');
    EXPECT_EQ(ClientFaultOf([&] { m_manager->SetEngineConfig(1, "e", "<e/>", longText, ""); }),
              "The profile name is longer than 255 bytes");
    EXPECT_EQ(ClientFaultOf([&] { m_manager->SetEngineConfig(1, "e", "<e/>", "\xff", ""); }),
              "The profile name holds a character that XML does not allow");
    EXPECT_EQ(ClientFaultOf([&] { m_manager->SetEngineConfig(1, "e", "<e/>", "n", longText); }),
              "The camera preset is longer than 255 bytes");
    EXPECT_EQ(ClientFaultOf([&] { m_manager->SetEngineConfig(1, "e", "<e/>", "n", "\x1f"); }),
              "The camera preset holds a character that XML does not allow");
    EXPECT_EQ(ClientFaultOf([&] { m_manager->SetEngineConfig(1, "e", "", longText, ""); }),
              "The scene document could not be read");
    EXPECT_EQ(EngineConfig(1, "e"), "(none)");
    EXPECT_EQ(m_manager->GetProfileName(1), "name");
}

TEST_F(ProfileManagerTest, SetsNameAndPreset)
{
    Create("name");
    EXPECT_TRUE(m_manager->SetProfileName(1, ""));
    EXPECT_TRUE(m_manager->SetCameraPreset(1, "p"));
    EXPECT_EQ(m_manager->GetProfileName(1), "");
    EXPECT_EQ(m_manager->GetCameraPreset(1), "p");
    EXPECT_TRUE(m_manager->SetCameraPreset(1, ""));
    EXPECT_EQ(m_manager->GetCameraPreset(1), "");
    EXPECT_EQ(ClientFaultOf([&] { m_manager->SetProfileName(1, "\x7f\x80"); }),
              "The profile name holds a character that XML does not allow");
    EXPECT_EQ(ClientFaultOf([&] { m_manager->SetCameraPreset(1, std::string(1, '\0')); }),
              "The camera preset holds a character that XML does not allow");
}

TEST_F(ProfileManagerTest, NamesWhatAProfileDoesNotHold)
{
    Create();
    m_manager->SetEngineConfig(1, "r", "<e/>");
    EXPECT_EQ(ClientFaultOf([&] { m_manager->DeleteRule(1, "com.x.rule.r"); }),
              "Profile 1 has no behavior com.x.rule.r");
    EXPECT_EQ(ClientFaultOf([&] { m_manager->DeleteRule(1, "r"); }), "Profile 1 has no behavior r");
    EXPECT_EQ(ClientFaultOf([&] { m_manager->DeleteEngine(1, "q"); }), "Profile 1 has no engine q");
    EXPECT_TRUE(m_manager->DeleteEngine(1, "r"));
    EXPECT_EQ(EngineConfig(1, "r"), "(none)");
}

TEST_F(ProfileManagerTest, DeletesARuleOfOneProfileOnly)
{
    Create();
    Create();
    m_manager->SetRuleConfig(1, "r", "<1/>", true);
    m_manager->SetRuleConfig(2, "r", "<2/>", true);
    EXPECT_TRUE(m_manager->DeleteRule(1, "r"));
    EXPECT_THAT(ActiveRules(1), IsEmpty());
    EXPECT_THAT(ActiveRules(2), ElementsAre("r"));
    EXPECT_EQ(RuleConfig(2, "r"), "<2/>");
}

TEST_F(ProfileManagerTest, KeepsAnyDocumentByteForByte)
{
    Create();
    std::string bytes("<r>\0\xff\r\n'\"", 9);
    bytes += std::string(2'000'000, 'x');
    m_manager->SetRuleConfig(1, "r", bytes, true);
    m_manager->SetEngineConfig(1, "e", bytes);
    Reopen();
    EXPECT_TRUE(RuleConfig(1, "r") == bytes);
    EXPECT_TRUE(EngineConfig(1, "e") == bytes);
}

// ---- Commands ----

TEST_F(ProfileManagerTest, TheMDFunctionIsOffAtFirstAndStaysAsSet)
{
    EXPECT_FALSE(m_manager->GetMDActiveState());
    EXPECT_TRUE(m_manager->AlgorithmControl(3));
    EXPECT_TRUE(m_manager->GetMDActiveState());
    for (const int other : {0, 1})
        EXPECT_TRUE(m_manager->AlgorithmControl(other));
    Reopen();
    EXPECT_TRUE(m_manager->GetMDActiveState());
    EXPECT_TRUE(m_manager->AlgorithmControl(2));
    EXPECT_FALSE(m_manager->GetMDActiveState());
    Reopen();
    EXPECT_FALSE(m_manager->GetMDActiveState());
}

TEST_F(ProfileManagerTest, OtherCommandsAreUnknown)
{
    for (const int command : {-1, 4, 100, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        EXPECT_EQ(ClientFaultOf([&] { m_manager->AlgorithmControl(command); }),
                  "Unknown algorithm command " + std::to_string(command));
}
