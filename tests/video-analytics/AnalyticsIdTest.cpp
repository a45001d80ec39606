#include <AnalyticsId.h>

#include <fake-platform/FakePlatform.h>

#include <gtest/gtest.h>

namespace
{
using varloapi::AnalyticsId;

constexpr char kId[] = "com.varlo.rule.objectremoval";
constexpr char kAlias[] = "urn:varlo-com:AlgorithmId:ObjectRemoval:1";

class AnalyticsIdTest : public testing::Test
{
  protected:
    AnalyticsIdTest()
    {
        fake::Plugin plugin;
        plugin.fields.id = kId;
        plugin.fields.alias = kAlias;
        platform.plugins.push_back(plugin);
    }
    fake::Platform platform;
};

TEST_F(AnalyticsIdTest, TranslatesEitherFormToEither)
{
    for (const char* name : {kId, kAlias})
    {
        EXPECT_EQ(AnalyticsId::AnalyticsIdFromVarloId(name), kId);
        EXPECT_EQ(AnalyticsId::VarloIdFromAnalyticsId(name), kAlias);
    }
}

TEST_F(AnalyticsIdTest, GivesNothingForANameThatNoPluginHas)
{
    for (const char* name : {"", "com.varlo.rule.unknown", "com.varlo.rule.objectremoval ", "OBJECTREMOVAL"})
    {
        EXPECT_EQ(AnalyticsId::AnalyticsIdFromVarloId(name), "");
        EXPECT_EQ(AnalyticsId::VarloIdFromAnalyticsId(name), "");
    }
}

TEST_F(AnalyticsIdTest, AsksThePlatformEachTime)
{
    platform.plugins.front().fields.alias = "urn:new";
    EXPECT_EQ(AnalyticsId::AnalyticsIdFromVarloId(kAlias), "");
    EXPECT_EQ(AnalyticsId::VarloIdFromAnalyticsId(kId), "urn:new");
    platform.plugins.clear();
    EXPECT_EQ(AnalyticsId::AnalyticsIdFromVarloId(kId), "");
}

TEST_F(AnalyticsIdTest, KnowsTheEngineOfTheScene)
{
    EXPECT_EQ(AnalyticsId::SceneAnalyzerId(), "com.varlo.engine.sceneanalyzer");
}
} // namespace
