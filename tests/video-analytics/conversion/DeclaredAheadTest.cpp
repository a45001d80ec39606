// The classes of the families can be declared ahead of their headers, as code does that only passes them on.

namespace profile_conversion
{
class LoiteringConverter;
class StoppedVehicleConverter;
class SceneAnalyzerConverter;
namespace loitering
{
class Config;
class OnvifDoc;
class Rule;
class VarloDoc;
} // namespace loitering
namespace stoppedvehicle
{
class Config;
class OnvifDoc;
class Rule;
class VarloDoc;
} // namespace stoppedvehicle
} // namespace profile_conversion

#include <AbandonedObjectConverter.h>
#include <LoiteringConverter.h>
#include <SceneAnalyzerConverter.h>
#include <StoppedVehicleConverter.h>

#include <gtest/gtest.h>

#include <type_traits>

namespace profile_conversion
{
TEST(DeclaredAhead, IsTheClassOfTheHeader)
{
    EXPECT_TRUE(LoiteringConverter::CanConvert(loitering::Config::Id()));
    EXPECT_TRUE(StoppedVehicleConverter::CanConvert(stoppedvehicle::Config::Id()));
    EXPECT_TRUE(SceneAnalyzerConverter::CanConvert("com.varlo.engine.sceneanalyzer"));
}

TEST(DeclaredAhead, FamiliesThatLookAlikeAreDifferentTypes)
{
    EXPECT_FALSE((std::is_same_v<abandonedobject::Rule, stoppedvehicle::Rule>));
    EXPECT_FALSE((std::is_same_v<abandonedobject::Config, stoppedvehicle::Config>));
    EXPECT_FALSE((std::is_base_of_v<abandonedobject::Rule, stoppedvehicle::Rule>));
}
} // namespace profile_conversion
