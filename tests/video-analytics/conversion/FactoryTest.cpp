#include "Families.h"

#include <SceneAnalyzerConverter.h>

#include <gtest/gtest.h>

#include <typeinfo>

namespace conversiontest
{
namespace
{
std::string TypeOf(const profile_conversion::ProfileDocConverter& converter)
{
    return typeid(converter).name();
}

TEST(Factory, LooksForFamiliesInItsOrder)
{
    Plugins platform;
    const std::string order[] = {"adaptivemotion",     "objectcounting",    "camerasabotage",
                                 "loiteringdetection", "directionalmotion", "objectremoval",
                                 "abandonedobject",    "stoppedvehicle"};
    std::vector<std::string> types;
    for (const std::string& word : order)
        types.push_back(TypeOf(*Converter("com.varlo.rule." + word)));
    // With one alias for all, the first of those that are left is found.
    for (const std::string& word : order)
        platform.Of("com.varlo.rule." + word).fields.alias = "shared";
    for (std::size_t i = 0; i < std::size(order); ++i)
    {
        const auto found = Converter("shared");
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(TypeOf(*found), types[i]) << order[i];
        platform.Of("com.varlo.rule." + order[i]).fields.alias = "";
    }
    EXPECT_EQ(Converter("shared"), nullptr);
}

TEST(Factory, SceneStandsBehindTwoFamiliesAndHasNoAlias)
{
    Plugins platform;
    const std::string scene = "com.varlo.engine.sceneanalyzer";
    const auto isScene = [](const auto& converter)
    { return dynamic_cast<profile_conversion::SceneAnalyzerConverter*>(converter.get()) != nullptr; };
    EXPECT_TRUE(isScene(Converter(scene)));
    platform.Of("com.varlo.rule.camerasabotage").fields.alias = scene;
    EXPECT_TRUE(isScene(Converter(scene)));
    platform.Of("com.varlo.rule.objectcounting").fields.alias = scene;
    EXPECT_FALSE(isScene(Converter(scene)));
    EXPECT_FALSE(isScene(Converter("urn:varlo-com:AlgorithmId:SceneAnalyzer:1")));
}
} // namespace
} // namespace conversiontest
