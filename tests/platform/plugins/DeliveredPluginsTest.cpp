#include <analytics/PluginManager.h>
#include <analytics/Settings.h>

#include "platform/PlatformTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

using analytics::Manifest;
using analytics::ManifestArray;
using analytics::PluginManager;

namespace
{
struct Behavior
{
    const char* word;
    const char* urn;
    const char* engine;
    bool fixedCamera;
    bool advanced;
};
// What clients have relied on.
constexpr Behavior kBehaviors[] = {
    {"abandonedobject", "AbandonedObject", "abandonedobject", true, true},
    {"adaptivemotion", "AdaptiveMotion", "motiondetector", false, false},
    {"camerasabotage", "CameraSabotage", "sabotagedetector", true, false},
    {"directionalmotion", "DirectionalMotion", "directionalmotion", true, true},
    {"loiteringdetection", "LoiteringDetection", "objecttracker", true, false},
    {"objectcounting", "ObjectCounting", "objecttracker", true, false},
    {"objectremoval", "ObjectRemoval", "objectremoval", true, true},
    {"stoppedvehicle", "StoppedVehicle", "stoppedvehicle", true, true},
};

ManifestArray Rules()
{
    ManifestArray rules;
    PluginManager().GetRulesManifests(rules);
    return rules;
}

// What the two cost together, shared engines once.
std::uint32_t CostOf(const Manifest& a, const Manifest& b)
{
    std::set<std::string> ids = {a.Id(), b.Id()};
    for (const Manifest* manifest : {&a, &b})
        for (const std::string& dependency : manifest->Dependencies())
            ids.insert(dependency);
    std::uint32_t cost = 0;
    for (const std::string& id : ids)
        cost += PluginManager().GetResourceRequirement(id);
    return cost;
}
} // namespace

class DeliveredPluginsTest : public PlatformTest
{
  protected:
    DeliveredPluginsTest()
    {
        m_configuration.pluginFolder = PLATFORM_DATA "/plugins";
        Configure();
    }
};

TEST_F(DeliveredPluginsTest, AreInTheOrderOfTheirNamesAndHaveThemInBothForms)
{
    ManifestArray rules;
    EXPECT_EQ(ErrorsOf([&] { rules = Rules(); }), "");
    EXPECT_TRUE(std::ranges::is_sorted(rules, {}, &Manifest::Id));
    for (const Manifest& rule : rules)
    {
        const std::string word = rule.Id().substr(rule.Id().rfind('.') + 1);
        EXPECT_THAT(rule.Alias(), testing::StrCaseEq("urn:varlo-com:AlgorithmId:" + word + ":1"));
        EXPECT_NE(rule.Name(), "");
        EXPECT_FALSE(rule.Dependencies().empty()) << rule.Id();
    }
}

TEST_F(DeliveredPluginsTest, KeepTheirAliasesEnginesAndFlags)
{
    for (const Behavior& wanted : kBehaviors)
    {
        Manifest rule;
        PluginManager().GetManifest(rule, std::string("com.varlo.rule.") + wanted.word);
        EXPECT_EQ(rule.Alias(), std::string("urn:varlo-com:AlgorithmId:") + wanted.urn + ":1");
        EXPECT_EQ(rule.FixedCameraPosition(), wanted.fixedCamera) << wanted.word;
        EXPECT_EQ(rule.SupportsAdvancedMode(), wanted.advanced) << wanted.word;
        ASSERT_FALSE(rule.Dependencies().empty());
        EXPECT_EQ(rule.Dependencies()[0], analytics::Settings::EnginePattern() + wanted.engine);
    }
}

TEST_F(DeliveredPluginsTest, HaveEnginesForAllThatTheyNeed)
{
    for (const Manifest& rule : Rules())
        for (const std::string& dependency : rule.Dependencies())
        {
            Manifest engine;
            PluginManager().GetManifest(engine, dependency);
            EXPECT_EQ(engine.Type(), "engine") << dependency;
        }
    Manifest scene;
    PluginManager().GetManifest(scene, "com.varlo.engine.sceneanalyzer");
    EXPECT_EQ(scene.Type(), "engine");
}

TEST_F(DeliveredPluginsTest, EachFitsTheBudgetSomePairsDoAndSomeDont)
{
    const std::uint32_t budget = analytics::Settings::MaxResource();
    int fitting = 0;
    int exceeding = 0;
    const ManifestArray rules = Rules();
    for (const Manifest& a : rules)
        for (const Manifest& b : rules)
        {
            const bool fits = CostOf(a, b) <= budget;
            EXPECT_TRUE(fits || a.Id() != b.Id()) << a.Id();
            ++(fits ? fitting : exceeding);
        }
    EXPECT_GT(fitting, static_cast<int>(rules.size())) << "no pair but a behavior with itself";
    EXPECT_GT(exceeding, 0);
}

TEST_F(DeliveredPluginsTest, LoiteringCostsTwentyAndNeedsTheTracker)
{
    Manifest loitering;
    PluginManager().GetManifest(loitering, "com.varlo.rule.loiteringdetection");
    EXPECT_EQ(loitering.Name(), "Loitering Detection");
    EXPECT_EQ(loitering.ResourceRequirement(), 20u);
    EXPECT_THAT(loitering.Dependencies(), testing::ElementsAre("com.varlo.engine.objecttracker"));
}
