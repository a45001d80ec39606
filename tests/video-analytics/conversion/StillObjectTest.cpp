// Abandoned object and stopped vehicle, which share all but their identifiers and four numbers.

#include "Families.h"

#include <AbandonedObjectConverter.h>
#include <StoppedVehicleConverter.h>

#include <analytics/ProfileDoc.h>

#include <gtest/gtest.h>

namespace conversiontest
{
namespace
{
using namespace profile_conversion;

struct Abandoned
{
    using Config = abandonedobject::Config;
    using VarloDoc = abandonedobject::VarloDoc;
    using OnvifDoc = abandonedobject::OnvifDoc;
    using Converter = AbandonedObjectConverter;
    static constexpr char kEngine[] = "com.varlo.engine.abandonedobject";
    static constexpr const char* kBounds[] = {"5", "1000", "30", "1800"};
};
struct Stopped
{
    using Config = stoppedvehicle::Config;
    using VarloDoc = stoppedvehicle::VarloDoc;
    using OnvifDoc = stoppedvehicle::OnvifDoc;
    using Converter = StoppedVehicleConverter;
    static constexpr char kEngine[] = "com.varlo.engine.stoppedvehicle";
    static constexpr const char* kBounds[] = {"3", "1000", "3", "300"};
};

// A line as text: "x,y x,y".
std::string Text(const Line& line)
{
    std::string text;
    for (const Point& point : line)
        text += (text.empty() ? "" : " ") + std::to_string(point.X()) + "," + std::to_string(point.Y());
    return text;
}

template <class FamilyT>
class StillObjectTest : public testing::Test
{
  protected:
    using Config = typename FamilyT::Config;

    static std::string Vertices(const std::vector<std::pair<int, int>>& points)
    {
        std::string xml;
        for (const auto& [x, y] : points)
            xml += "<vertex><x>" + std::to_string(x) + "</x><y>" + std::to_string(y) + "</y></vertex>";
        return "<vertices>" + xml + "</vertices>";
    }
    static std::string Size(const std::string& name, const std::string& content)
    {
        return "<objectsize><name>" + name + "</name>" + content + "</objectsize>";
    }
    static std::string Behavior(const std::string& content)
    {
        return "<behavior id='" + Config::Id() + "' active='1'>" + content + "</behavior>";
    }
    void Read(const std::string& content)
    {
        EXPECT_TRUE(typename FamilyT::VarloDoc().DocToConfig(Behavior(content), config));
    }
    void ReadSizes(const std::string& sizes)
    {
        Read("<filters><objectsizes>" + sizes + "</objectsizes></filters>");
    }
    void ReadModule(const std::string& parameters)
    {
        EXPECT_TRUE(typename FamilyT::OnvifDoc().DocToConfig(
            "<tt:C xmlns:tt='urn:t'><tt:AnalyticsModule Type='" + std::string(FamilyT::kEngine) +
                "'><tt:Parameters>" + parameters + "</tt:Parameters></tt:AnalyticsModule></tt:C>",
            config));
    }
    std::string Engine() { return typename FamilyT::OnvifDoc().ConfigToEngineDoc(FamilyT::kEngine, config); }
    std::string Client()
    {
        config.Active(true);
        std::string xml;
        EXPECT_TRUE(typename FamilyT::VarloDoc().ConfigToDoc(config, xml));
        return xml;
    }
    void SetDefault(const std::string& parameters)
    {
        platform.Of(FamilyT::kEngine).engineDocument =
            "<tt:C xmlns:tt='urn:t'><tt:AnalyticsModule Type='" + std::string(FamilyT::kEngine) +
            "'><tt:Parameters>" + parameters + "</tt:Parameters></tt:AnalyticsModule></tt:C>";
    }

    Plugins platform;
    Config config;
};
using StillObjects = testing::Types<Abandoned, Stopped>;
TYPED_TEST_SUITE(StillObjectTest, StillObjects);

TYPED_TEST(StillObjectTest, StartsWithItsDefaults)
{
    EXPECT_EQ(Text(this->config.MinSizeFilter()), "0,0 0,0");
    EXPECT_EQ(Text(this->config.MaxSizeFilter()), "0,0 0,0");
    EXPECT_TRUE(this->config.ExcludeZones().empty());
    EXPECT_EQ(this->config.Sensitivity(), 5);
    EXPECT_FALSE(this->config.AdvancedMode());
    this->config.ExcludeZones({{}, {{1, 2}}});
    this->config.AddExcludeZone({{3, 4}});
    EXPECT_EQ(this->config.ExcludeZones().size(), 3U);
    this->config.ExcludeZones({});
    EXPECT_TRUE(this->config.ExcludeZones().empty());
}

TYPED_TEST(StillObjectTest, MissingDelayIsThreeToClientsAndFiveToTheEngine)
{
    this->Read("<rois><roi/></rois>");
    EXPECT_EQ(this->config.GetRules().at(0)->AlarmDelay(), 3);
    const std::string rule =
        "<tt:C xmlns:tt='urn:t'><tt:Rule Type='" + TypeParam::Config::Id() + "'/></tt:C>";
    EXPECT_TRUE(typename TypeParam::OnvifDoc().DocToConfig(rule, this->config));
    EXPECT_EQ(this->config.GetRules().at(1)->AlarmDelay(), 5);
    EXPECT_EQ(this->config.GetRules().at(1)->DwellTime(), 5);
}

TYPED_TEST(StillObjectTest, SeverityBeyondTheRangeIsCritical)
{
    this->Read("<rois><roi><alarmSeverity>9</alarmSeverity></roi></rois>");
    EXPECT_EQ(this->config.GetRules().at(0)->Severity(), analytics::Critical);
}

TYPED_TEST(StillObjectTest, MaxSizeThatLacksPointsTakesThoseOfTheMinSize)
{
    this->ReadSizes(this->Size("minObj", this->Vertices({{1, 2}, {3, 4}})) + this->Size("maxObj", ""));
    EXPECT_EQ(Text(this->config.MaxSizeFilter()), "1,2 3,4");
    this->ReadSizes(this->Size("minObj", this->Vertices({{1, 2}, {3, 4}})) +
                    this->Size("maxObj", this->Vertices({{9, 8}})));
    EXPECT_EQ(Text(this->config.MaxSizeFilter()), "9,8 3,4");
    this->ReadSizes(this->Size("maxObj", this->Vertices({{9, 8}, {7, 6}})));
    EXPECT_EQ(Text(this->config.MinSizeFilter()), "0,0 0,0") << "the minimum takes nothing from the maximum";
    this->Read("");
    EXPECT_EQ(Text(this->config.MaxSizeFilter()), "0,0 0,0");
}

TYPED_TEST(StillObjectTest, MaxSizeThatAnEngineLacksIsNothing)
{
    this->ReadModule("<tt:ElementItem Name='ObjectSizeFilters'><tt:Rectangle Name='MinSize'>"
                     "<tt:Point x='1' y='2'/><tt:Point x='3' y='4'/><tt:Point x='5' y='6'/></tt:Rectangle>"
                     "</tt:ElementItem>");
    EXPECT_EQ(Text(this->config.MinSizeFilter()), "1,2 3,4");
    EXPECT_EQ(Text(this->config.MaxSizeFilter()), "0,0 0,0");
    // Without the item the sizes stay; with it, each starts anew.
    this->ReadModule("");
    EXPECT_EQ(Text(this->config.MinSizeFilter()), "1,2 3,4");
    this->ReadModule("<tt:ElementItem Name='ObjectSizeFilters'><tt:Rectangle Name='MaxSize'>"
                     "<tt:Point x='7'/></tt:Rectangle></tt:ElementItem>");
    EXPECT_EQ(Text(this->config.MinSizeFilter()), "0,0 0,0");
    EXPECT_EQ(Text(this->config.MaxSizeFilter()), "7,0 0,0");
}

TYPED_TEST(StillObjectTest, SizeTakesItsFirstTwoVertices)
{
    this->ReadSizes(this->Size("minObj", this->Vertices({{1, 2}, {3, 4}, {5, 6}})));
    EXPECT_EQ(Text(this->config.MinSizeFilter()), "1,2 3,4");
}

TYPED_TEST(StillObjectTest, SizesAreAlwaysWrittenAsTwoPoints)
{
    const std::string client = this->Client();
    for (const char* name : {"minObj", "maxObj"})
        EXPECT_EQ(CountAt(client, "behavior/filters/objectsizes/objectsize[name='" + std::string(name) +
                                      "']/vertices/vertex[x='0' and y='0']"),
                  2U);
    const std::string engine = this->Engine();
    for (const char* name : {"MinSize", "MaxSize"})
        EXPECT_EQ(
            CountAt(engine, "//tt:Parameters/tt:ElementItem[@Name='ObjectSizeFilters']/tt:Rectangle[@Name='" +
                                std::string(name) + "']/tt:Point[@x='0' and @y='0']"),
            2U);
}

TYPED_TEST(StillObjectTest, EmptyExcludeZoneStaysAndLeavesAGapInTheEnginesNumbers)
{
    const std::string zone = "<excludeZone>" + this->Vertices({{1, 2}}) + "</excludeZone>";
    this->Read("<excludeZones>" + zone + "<excludeZone><name>x</name></excludeZone>" + zone +
               "</excludeZones>");
    ASSERT_EQ(this->config.ExcludeZones().size(), 3U);
    EXPECT_TRUE(this->config.ExcludeZones()[1].empty());
    const std::string client = this->Client();
    EXPECT_EQ(CountAt(client, "behavior/excludeZones/excludeZone/vertices"), 3U);
    EXPECT_EQ(TextAt(client, "behavior/excludeZones/excludeZone[2]/name"), "Exclude 2");
    EXPECT_EQ(CountAt(client, "behavior/excludeZones/excludeZone[2]/vertices/*"), 0U);
    const std::string polygons = "//tt:ElementItem[@Name='ExcludeZones']/tt:Polygon";
    const std::string engine = this->Engine();
    EXPECT_EQ(CountAt(engine, polygons), 2U);
    EXPECT_EQ(TextAt(engine, polygons + "[1]/@Name"), "Exclude 1");
    EXPECT_EQ(TextAt(engine, polygons + "[2]/@Name"), "Exclude 3");
}

TYPED_TEST(StillObjectTest, ReadsEveryPolygonOfTheEngineAlsoAnEmptyOne)
{
    this->ReadModule("<tt:ElementItem Name='ExcludeZones'><tt:Polygon><tt:Point x='1' y='2'/></tt:Polygon>"
                     "<tt:Polygon Name='any'/></tt:ElementItem>");
    ASSERT_EQ(this->config.ExcludeZones().size(), 2U);
    EXPECT_EQ(this->config.ExcludeZones()[0].at(0).Y(), 2);
    EXPECT_TRUE(this->config.ExcludeZones()[1].empty());
}

TYPED_TEST(StillObjectTest, DefaultRectanglesGoAndDefaultPolygonsStay)
{
    this->SetDefault("<tt:ElementItem Name='ObjectSizeFilters'><tt:Rectangle Name='MinSize'/>"
                     "<tt:Rectangle Name='Other'/><tt:Line Name='kept'/></tt:ElementItem>"
                     "<tt:ElementItem Name='ExcludeZones'><tt:Polygon Name='Exclude 1'/></tt:ElementItem>");
    this->config.AddExcludeZone({{1, 2}});
    const std::string engine = this->Engine();
    const std::string sizes = "//tt:ElementItem[@Name='ObjectSizeFilters']/";
    EXPECT_EQ(CountAt(engine, sizes + "tt:Rectangle"), 2U);
    EXPECT_EQ(CountAt(engine, sizes + "tt:Rectangle[@Name='MinSize']/tt:Point"), 2U);
    EXPECT_EQ(CountAt(engine, sizes + "tt:Line[@Name='kept']"), 1U);
    const std::string zones = "//tt:ElementItem[@Name='ExcludeZones']/tt:Polygon[@Name='Exclude 1']";
    EXPECT_EQ(CountAt(engine, zones), 2U) << "one of the default and one of the client";
    EXPECT_EQ(CountAt(engine, zones + "[2]/tt:Point"), 1U);
}

TYPED_TEST(StillObjectTest, AddsTheItemsThatTheDefaultLacks)
{
    this->SetDefault("<tt:SimpleItem Name='Sensitivity' Value='5'/>");
    this->config.Sensitivity(8);
    this->config.AddExcludeZone({{1, 2}, {3, 4}});
    const std::string engine = this->Engine();
    EXPECT_EQ(TextAt(engine, "//tt:SimpleItem/@Value"), "8");
    EXPECT_EQ(TextAt(engine, "//tt:Parameters/tt:ElementItem[1]/@Name"), "ObjectSizeFilters");
    EXPECT_EQ(TextAt(engine, "//tt:Parameters/tt:ElementItem[2]/@Name"), "ExcludeZones");
    EXPECT_EQ(CountAt(engine, "//tt:Parameters/tt:ElementItem[2]/tt:Polygon/tt:Point"), 2U)
        << "two points are no line here";
    EXPECT_EQ(CountAt(engine, "//tt:ElementItem/tt:ElementItem"), 0U);
}

TYPED_TEST(StillObjectTest, DefaultWithoutAModuleOrItsParametersIsOfNoUse)
{
    for (const std::string& module :
         {std::string(), "<tt:AnalyticsModule Type='" + std::string(TypeParam::kEngine) + "'/>"})
    {
        this->platform.Of(TypeParam::kEngine).engineDocument = "<tt:C xmlns:tt='urn:t'>" + module + "</tt:C>";
        EXPECT_EQ(this->Engine(), "");
    }
}

TYPED_TEST(StillObjectTest, NumbersItsExcludeZonesAsItIsTold)
{
    analytics::Document doc;
    ASSERT_TRUE(doc.ParseString("<a/>"));
    const std::unique_ptr<analytics::DocumentNode> node(doc.SelectNode("a", nullptr));
    typename TypeParam::VarloDoc varlo;
    varlo.AddExcludeZone(42, {{1, 2}}, node.get());
    varlo.AddExcludeZone(43, {{1, 2}}, nullptr);
    varlo.AddPointNodes({3, 4}, node.get());
    EXPECT_EQ(node->DumpToString(),
              "<a><excludeZone><name>Exclude 42</name><vertices><vertex><x>1</x><y>2</y>"
              "</vertex></vertices></excludeZone><vertex><x>3</x><y>4</y></vertex></a>");
}

TYPED_TEST(StillObjectTest, AdvisesOnTwoNumbersAndPassesAny)
{
    ProfileParameters params;
    const std::string engine = typename TypeParam::Converter().FromVarloToOnvif(
        this->Behavior("<rois><roi><dwellTime>4</dwellTime><alarmDelay>1000</alarmDelay></roi>"
                       "<roi><dwellTime>1</dwellTime><alarmDelay>1</alarmDelay></roi></rois>"),
        params);
    const std::string back = typename TypeParam::Converter().FromOnvifToVarlo(engine, params);
    EXPECT_EQ(TextAt(back, "//roi[1]/dwellTime"), "4");
    EXPECT_EQ(TextAt(back, "//roi[1]/alarmDelay"), "1000");
    EXPECT_EQ(TextAt(back, "//roi[2]/dwellTime"), "1");
    EXPECT_EQ(TextAt(back, "//roi[2]/alarmDelay"), "1");
    const char* const kAttributes[] = {"dwellTime/@min", "dwellTime/@max", "alarmDelay/@min",
                                       "alarmDelay/@max"};
    for (std::size_t i = 0; i < std::size(kAttributes); ++i)
        EXPECT_EQ(TextAt(back, std::string("//roi[2]/") + kAttributes[i]), TypeParam::kBounds[i]);
}

TEST(StillObjects, AreToldApartByTheirIdentifiers)
{
    Plugins platform;
    EXPECT_TRUE(StoppedVehicleConverter::CanConvert("com.varlo.rule.stoppedvehicle"));
    EXPECT_FALSE(StoppedVehicleConverter::CanConvert("com.varlo.rule.abandonedobject"));
    EXPECT_FALSE(AbandonedObjectConverter::CanConvert("com.varlo.rule.stoppedvehicle"));
    platform.Of("com.varlo.rule.stoppedvehicle").fields.alias = "com.varlo.rule.abandonedobject";
    EXPECT_TRUE(StoppedVehicleConverter::CanConvert("com.varlo.rule.abandonedobject")) << "the alias decides";
}

TEST(StillObjects, ReadAUrnOnlyIfItIsThePluginsAlias)
{
    Plugins platform;
    stoppedvehicle::Config config;
    const std::string document = "<behavior id='urn:varlo-com:AlgorithmId:StoppedVehicle:1' active='1'/>";
    EXPECT_TRUE(stoppedvehicle::VarloDoc().DocToConfig(document, config));
    platform.Of("com.varlo.rule.stoppedvehicle").fields.alias = "urn:other";
    EXPECT_FALSE(stoppedvehicle::VarloDoc().DocToConfig(document, config));
}
} // namespace
} // namespace conversiontest
