// The scene in the clients' form.

#include "Families.h"
#include "SceneAnalyzerScenes.h"

#include <analytics/Document.h>

#include <gmock/gmock.h>

#include <memory>

namespace
{

using namespace scenes;
using profile_conversion::Line;
using profile_conversion::Point;
using profile_conversion::Polygon;
using scene::Config;
using scene::VarloDoc;
using testing::HasSubstr;
using testing::Not;

std::string Profile(const std::string& content)
{
    return "<analyticProfile version=\"2.0\" name=\"P\">" + content + "</analyticProfile>";
}

std::string Vertex(int x, int y)
{
    return "<vertex><x>" + std::to_string(x) + "</x><y>" + std::to_string(y) + "</y></vertex>";
}

std::string Block(const std::string& type, const std::string& name, const std::string& vertices)
{
    return "<" + type + "><name>" + name + "</name><vertices>" + vertices + "</vertices></" + type + ">";
}

std::string Calibrated(const std::string& objects, const std::string& fovs = "")
{
    return Profile("<calibration calibrated=\"1\"><objectsizes>" + objects + "</objectsizes><fovs>" + fovs +
                   "</fovs></calibration>");
}

std::string Sizes(const std::string& blocks)
{
    return Profile("<filters><objectsizes>" + blocks + "</objectsizes></filters>");
}

std::string Zones(const std::string& zones) { return Profile("<excludeZones>" + zones + "</excludeZones>"); }

const std::string kOneTwo = Vertex(1, 2) + Vertex(3, 4);
const Line kOneTwoLine = {{1, 2}, {3, 4}};

TEST(SceneAnalyzerVarloDoc, RootAloneIsASceneOfDefaults)
{
    Config expected;
    expected.ProfileName("Bare");
    EXPECT_EQ(Text(FromClient("<analyticProfile name=\"Bare\"/>")), Text(expected));
    EXPECT_EQ(expected.Sensitivity(), 5);
    EXPECT_EQ(expected.SceneType() + expected.Background() + expected.Tuning(), 0);
    EXPECT_FALSE(expected.GetCalibration().Calibrated());
    EXPECT_EQ(expected.GetCalibration().PhysicalHeight(), 175);
    EXPECT_EQ(expected.GetCalibration().PhysicalHeightUnit(), "cm");
    EXPECT_EQ(Text(expected.MaxObjectSize()), " (0, 0) (0, 0)\n");
    EXPECT_EQ(FromClient("<analyticProfile/>").ProfileName(), "");
}

TEST(SceneAnalyzerVarloDoc, WhatIsNoSceneIsRefusedAndLeavesTheConfig)
{
    for (const char* text :
         {"", "no markup", "<analyticProfile>", "<profile/>", "<x:analyticProfile xmlns:x='u'/>",
          "<behavior version=\"2.0\" id=\"x\" active=\"1\"/>"})
    {
        Config config;
        config.ProfileName("before");
        config.Tuning(2);
        const std::string before = Text(config);
        EXPECT_FALSE(VarloDoc().DocToConfig(text, config)) << text;
        EXPECT_EQ(Text(config), before);
    }
    EXPECT_EQ(FromClient("<a><b><analyticProfile name=\"deep\"/></b></a>").ProfileName(), "deep");
}

TEST(SceneAnalyzerVarloDoc, AnyNumberButZeroIsCalibratedAndWrittenAsOne)
{
    for (const auto& [text, calibrated] : {std::pair{"1", true}, {"7", true}, {"-1", true}, {"0", false}})
    {
        const Config config = FromClient(Profile("<calibration calibrated=\"" + std::string(text) + "\"/>"));
        EXPECT_EQ(config.GetCalibration().Calibrated(), calibrated) << text;
        EXPECT_THAT(ToClient(config), HasSubstr(calibrated ? "<calibration calibrated=\"1\">"
                                                           : "<calibration calibrated=\"0\">"));
    }
    EXPECT_FALSE(FromClient(Profile("<calibration/>")).GetCalibration().Calibrated());
}

TEST(SceneAnalyzerVarloDoc, MaximumWithThreeVerticesTakesTheMinimum)
{
    const Config config = FromClient(Sizes(Block("objectsize", "minObj", kOneTwo) +
                                           Block("objectsize", "maxObj", kOneTwo + Vertex(9, 9))));
    EXPECT_EQ(Text(config.MinObjectSize()), Text(kOneTwoLine));
    EXPECT_EQ(Text(config.MaxObjectSize()), Text(kOneTwoLine));
}

TEST(SceneAnalyzerVarloDoc, FirstLineOfARunHasNothingToTake)
{
    const Config config = FromClient(Sizes(Block("objectsize", "maxObj", kOneTwo)));
    EXPECT_EQ(Text(config.MinObjectSize()), " (0, 0) (0, 0)\n");
    EXPECT_EQ(Text(config.MaxObjectSize()), Text(kOneTwoLine));
    // Calibration and filters are two runs: the widths of the first don't reach the second.
    const Config both = FromClient(Profile("<calibration><fovs>" + Block("fov", "farWidth", kOneTwo) +
                                           "</fovs></calibration><filters><objectsizes/></filters>"));
    EXPECT_EQ(Text(both.GetCalibration().FarWidth()), Text(kOneTwoLine));
    EXPECT_EQ(Text(both.MinObjectSize()), " (0, 0) (0, 0)\n");
}

TEST(SceneAnalyzerVarloDoc, SecondObjectWithOneVertexTakesTheFirst)
{
    const Config config = FromClient(
        Calibrated(Block("objectsize", "object1", kOneTwo) + Block("objectsize", "object2", Vertex(9, 9))));
    EXPECT_EQ(Text(config.GetCalibration().ObjectAtNearLeft()), Text(kOneTwoLine));
    EXPECT_EQ(Text(config.GetCalibration().ObjectAtDistance()), Text(kOneTwoLine));
    EXPECT_EQ(Text(config.GetCalibration().ObjectAtNearRight()), Text(kOneTwoLine));
}

TEST(SceneAnalyzerVarloDoc, MissingNearWidthTakesTheThirdObject)
{
    const std::string third = Block("objectsize", "object3", kOneTwo);
    const std::string far = Block("fov", "farWidth", Vertex(5, 6) + Vertex(7, 8));
    const Config config = FromClient(Calibrated(third, far));
    EXPECT_EQ(Text(config.GetCalibration().NearWidth()), Text(kOneTwoLine));
    EXPECT_EQ(Text(config.GetCalibration().FarWidth()), " (5, 6) (7, 8)\n");
    EXPECT_EQ(Text(config.GetCalibration().ObjectAtNearLeft()), " (0, 0) (0, 0)\n");
}

TEST(SceneAnalyzerVarloDoc, MissingCoordinatesTakeThoseOfTheLineBefore)
{
    const Config config = FromClient(
        Sizes(Block("objectsize", "minObj", kOneTwo) +
              Block("objectsize", "maxObj", "<vertex><x>8</x></vertex><vertex><y>9</y></vertex>")));
    EXPECT_EQ(Text(config.MaxObjectSize()), " (8, 2) (3, 9)\n");
}

TEST(SceneAnalyzerVarloDoc, TwoLinesOfOneNameAreNone)
{
    const Config config =
        FromClient(Sizes(Block("objectsize", "minObj", kOneTwo) + Block("objectsize", "maxObj", kOneTwo) +
                         Block("objectsize", "minObj", Vertex(5, 6) + Vertex(7, 8))));
    EXPECT_EQ(Text(config.MinObjectSize()), " (0, 0) (0, 0)\n");
    EXPECT_EQ(Text(config.MaxObjectSize()), Text(kOneTwoLine));
}

TEST(SceneAnalyzerVarloDoc, ObjectsAreNumberedNearLeftDistanceNearRight)
{
    const Config config = FromClient(Calibrated(Block("objectsize", "object1", Vertex(1, 1) + Vertex(1, 1)) +
                                                Block("objectsize", "object2", Vertex(2, 2) + Vertex(2, 2)) +
                                                Block("objectsize", "object3", Vertex(3, 3) + Vertex(3, 3))));
    EXPECT_EQ(config.GetCalibration().ObjectAtNearLeft()[0].X(), 1);
    EXPECT_EQ(config.GetCalibration().ObjectAtDistance()[0].X(), 2);
    EXPECT_EQ(config.GetCalibration().ObjectAtNearRight()[0].X(), 3);
}

TEST(SceneAnalyzerVarloDoc, ZoneWithoutVerticesGoesAndTheOthersAreRenumbered)
{
    const Config config = FromClient(Zones(Block("excludeZone", "Exclude 1", Vertex(1, 1)) +
                                           Block("excludeZone", "Exclude 4", "") + "<excludeZone/>" +
                                           Block("excludeZone", "Exclude 7", kOneTwo)));
    ASSERT_EQ(config.ExcludeZones().size(), 2u);
    EXPECT_EQ(config.ExcludeZones()[0].size(), 1u);
    EXPECT_EQ(config.ExcludeZones()[1].size(), 2u);
    const std::string written = ToClient(config);
    EXPECT_THAT(written, HasSubstr("<excludeZone><name>Exclude 1</name>"));
    EXPECT_THAT(written, HasSubstr("<excludeZone><name>Exclude 2</name><vertices>" + kOneTwo));
    EXPECT_THAT(written, Not(HasSubstr("Exclude 3")));
    EXPECT_THAT(written, Not(HasSubstr("Exclude 7")));
}

TEST(SceneAnalyzerVarloDoc, EmptyZoneOfAModelIsNotWrittenButCounts)
{
    Config config;
    config.AddExcludeZone({{1, 2}});
    config.AddExcludeZone({});
    config.AddExcludeZone({{3, 4}});
    const std::string written = ToClient(config);
    EXPECT_THAT(written, HasSubstr("Exclude 1"));
    EXPECT_THAT(written, Not(HasSubstr("Exclude 2")));
    EXPECT_THAT(written, HasSubstr("Exclude 3"));
}

TEST(SceneAnalyzerVarloDoc, ZonesMayHaveAnyNumberOfVertices)
{
    std::string zones;
    std::string vertices;
    for (int count = 1; count <= 50; ++count)
        zones += Block("excludeZone", "z", vertices += Vertex(count, -count));
    const Config config = FromClient(Zones(zones));
    ASSERT_EQ(config.ExcludeZones().size(), 50u);
    for (std::size_t i = 0; i < 50; ++i)
        EXPECT_EQ(config.ExcludeZones()[i].size(), i + 1);
    EXPECT_EQ(config.ExcludeZones()[49][49].Y(), -50);
}

TEST(SceneAnalyzerVarloDoc, HeightWithoutUnitEmptiesTheUnit)
{
    const Config config = FromClient(Calibrated("<physicalHeight>180</physicalHeight>"));
    EXPECT_EQ(config.GetCalibration().PhysicalHeight(), 180);
    EXPECT_EQ(config.GetCalibration().PhysicalHeightUnit(), "");
    const Config unitAlone = FromClient(Calibrated("<physicalHeight unit=\"in\"/>"));
    EXPECT_EQ(unitAlone.GetCalibration().PhysicalHeight(), 175);
    EXPECT_EQ(unitAlone.GetCalibration().PhysicalHeightUnit(), "in");
    const Config none = FromClient(Calibrated(""));
    EXPECT_EQ(none.GetCalibration().PhysicalHeight(), 175);
    EXPECT_EQ(none.GetCalibration().PhysicalHeightUnit(), "cm");
}

TEST(SceneAnalyzerVarloDoc, PresetIsWrittenAndNeverRead)
{
    Config config;
    config.ProfileName("P");
    config.CameraPreset("Gate");
    const std::string written = ToClient(config);
    EXPECT_THAT(written, HasSubstr("<cameraPreset>Gate</cameraPreset>"));
    Config expected;
    expected.ProfileName("P");
    EXPECT_EQ(Text(FromClient(written)), Text(expected));
}

TEST(SceneAnalyzerVarloDoc, SceneWithoutZonesHasTheEmptyContainer)
{
    EXPECT_THAT(ToClient(Config()), HasSubstr("</filters><excludeZones/></analyticProfile>"));
}

TEST(SceneAnalyzerVarloDoc, NoValueIsTested)
{
    const Config config = FromClient(Profile("<sceneType>-3</sceneType><sensitivity>500</sensitivity>"));
    EXPECT_EQ(config.SceneType(), -3);
    EXPECT_EQ(config.Sensitivity(), 500);
    EXPECT_THAT(ToClient(config), HasSubstr("<sensitivity>500</sensitivity>"));
}

TEST(SceneAnalyzerVarloDoc, OperationsIgnoreNull)
{
    analytics::Document doc;
    ASSERT_TRUE(doc.ParseString("<a/>"));
    const std::unique_ptr<analytics::DocumentNode> node(doc.SelectNode("//a", nullptr));
    scene::Calibration calibration;
    Line line = {{1, 2}, {3, 4}};
    Polygon polygon;
    Point point(1, 2);
    for (analytics::Document* document : {&doc, static_cast<analytics::Document*>(nullptr)})
    {
        analytics::DocumentNode* const context = document == nullptr ? node.get() : nullptr;
        VarloDoc().NodeToCalibration(calibration, context, document);
        VarloDoc().NodeToLine(line, "./x", context, document);
        VarloDoc().NodeToPolygon(polygon, context, document);
        VarloDoc().NodeToPoint(point, context, document);
        EXPECT_EQ(VarloDoc().SelectCalibrationNode(context, document), nullptr);
    }
    EXPECT_EQ(Text(line), Text(kOneTwoLine));
    EXPECT_TRUE(polygon.empty());
    VarloDoc().AddCalibrationNodes(calibration, nullptr);
    VarloDoc().AddObjectSizeFilterNodes(line, line, nullptr);
    VarloDoc().AddExcludeZonesNodes({{{1, 2}}}, nullptr);
    VarloDoc().AddNodeFromLine(line, "fov", "n", 1, 2, nullptr);
    VarloDoc().AddNodeFromZone({{1, 2}}, "n", nullptr);
    VarloDoc().AddNodeFromZone({}, "n", node.get());
    VarloDoc().AddPointNode(point, nullptr);
    VarloDoc().AddPointsNodes({point}, nullptr);
    VarloDoc().AddPointsNodes({}, node.get());
    EXPECT_EQ(Plain(doc.DumpToString()), "<a/>");
}

TEST(SceneAnalyzerVarloDoc, SceneOfAnySizeIsWrittenWhole)
{
    Config config;
    config.AddExcludeZone(Polygon(400000, Point(1, 1))); // three elements each
    config.AddExcludeZone({{1, 1}});
    std::string xml = "before";
    EXPECT_TRUE(VarloDoc().ConfigToDoc(config, xml));
    EXPECT_EQ(conversiontest::CountAt(xml, "//excludeZone/vertices/vertex"), 400001U);
}

} // namespace
