// The scene in the form of the analytics engine.

#include "SceneAnalyzerScenes.h"

#include <analytics/ProfileDoc.h>

#include <gmock/gmock.h>

#include <memory>

namespace
{

using namespace scenes;
using profile_conversion::Line;
using profile_conversion::Polygon;
using scene::Config;
using scene::OnvifDoc;
using testing::HasSubstr;
using testing::Not;

constexpr char kRoot[] = "<tt:C xmlns:tt='http://www.onvif.org/ver10/schema'>";
const Line kLine = {{1, 2}, {3, 4}};
const std::string kPoints = "<tt:Point x='1' y='2'/><tt:Point x='3' y='4'/>";

std::string Form(const std::string& parameters)
{
    return kRoot + std::string("<tt:AnalyticsModule Type='com.varlo.engine.sceneanalyzer'><tt:Parameters>") +
           parameters + "</tt:Parameters></tt:AnalyticsModule></tt:C>";
}

std::string Item(const std::string& name, const std::string& content)
{
    return "<tt:ElementItem Name='" + name + "'>" + content + "</tt:ElementItem>";
}

class SceneAnalyzerOnvifDoc : public SceneTest
{
};

TEST_F(SceneAnalyzerOnvifDoc, ZonesStandBehindThoseOfTheDefaultConfiguration)
{
    const std::string empty = "<tt:ElementItem Name=\"ExcludeZones\"/>";
    const std::size_t place = Engine().find(empty);
    ASSERT_NE(place, std::string::npos);
    Engine().replace(place, empty.size(),
                     Item("ExcludeZones", "<tt:Polygon Name='own'><tt:Point x='9' y='9'/></tt:Polygon>"));
    Config config;
    const std::vector<Polygon> zones = {{{1, 1}}, {{2, 2}, {3, 3}}, {{4, 4}, {5, 5}, {6, 6}}};
    for (const Polygon& zone : zones)
        config.AddExcludeZone(zone);
    const std::string xml = ToEngine(config);
    EXPECT_THAT(xml, HasSubstr("<tt:Polygon Name=\"own\"><tt:Point x=\"9\" y=\"9\"/></tt:Polygon>"
                               "<tt:Polygon><tt:Point x=\"1\" y=\"1\"/></tt:Polygon>"));
    const Config read = FromEngine(xml);
    ASSERT_EQ(read.ExcludeZones().size(), 4u);
    EXPECT_EQ(read.ExcludeZones()[0][0].X(), 9);
    for (std::size_t i = 0; i < zones.size(); ++i)
        EXPECT_EQ(read.ExcludeZones()[i + 1].size(), zones[i].size());
}

TEST_F(SceneAnalyzerOnvifDoc, PolygonWithoutPointsIsDroppedWhenRead)
{
    const Config config = FromEngine(
        Form(Item("ExcludeZones", "<tt:Polygon/><tt:Polygon>" + kPoints + "</tt:Polygon><tt:Polygon/>")));
    ASSERT_EQ(config.ExcludeZones().size(), 1u);
    EXPECT_EQ(config.ExcludeZones()[0].size(), 2u);
}

TEST_F(SceneAnalyzerOnvifDoc, ShapeWithThreePointsKeepsThem)
{
    const std::string before = "Name=\"ObjectAtDistance\">";
    const std::string points = "<tt:Point x=\"7\" y=\"8\"/>";
    Engine().insert(Engine().find(before) + before.size(), points);
    Config config;
    config.GetCalibration().ObjectAtDistance(kLine);
    config.GetCalibration().NearWidth(kLine);
    const std::string xml = Plain(ToEngine(config));
    EXPECT_THAT(xml, HasSubstr(before + points + "<tt:Point x=\"0\" y=\"0\"/><tt:Point x=\"0\" y=\"0\"/><"));
    EXPECT_THAT(xml, HasSubstr("Name=\"NearWidth\"><tt:Point x=\"1\" y=\"2\"/><tt:Point x=\"3\" y=\"4\"/><"));
}

TEST_F(SceneAnalyzerOnvifDoc, MissingMaximumBecomesTheMinimum)
{
    const Config config = FromEngine(
        Form(Item("ObjectSizeFilters", "<tt:Rectangle Name='MinSize'>" + kPoints + "</tt:Rectangle>")));
    EXPECT_EQ(Text(config.MinObjectSize()), Text(kLine));
    EXPECT_EQ(Text(config.MaxObjectSize()), Text(kLine));
}

TEST_F(SceneAnalyzerOnvifDoc, MissingNearWidthTakesNothingFromTheObjects)
{
    const std::string object = "<tt:Rectangle Name='ObjectAtDistance'>" + kPoints + "</tt:Rectangle>";
    const std::string far = "<tt:Line Name='FarWidth'><tt:Point x='5'/></tt:Line>";
    const Config config = FromEngine(Form(Item("Calibration", object + far)));
    EXPECT_EQ(Text(config.GetCalibration().ObjectAtDistance()), Text(kLine));
    EXPECT_EQ(Text(config.GetCalibration().NearWidth()), " (0, 0) (0, 0)\n");
    EXPECT_EQ(Text(config.GetCalibration().FarWidth()), " (0, 0) (0, 0)\n") << "one point is no line";
}

TEST_F(SceneAnalyzerOnvifDoc, EngineWithoutItemsIsASceneOfDefaults)
{
    EXPECT_EQ(Text(FromEngine(Form(""))), Text(Config()));
    Config tuned;
    tuned.Tuning(2);
    EXPECT_EQ(Text(FromEngine(Form("<tt:SimpleItem Name='Tuning' Value='2'/>"))), Text(tuned));
}

TEST_F(SceneAnalyzerOnvifDoc, CalibrationWithoutHeightKeepsTheNumberAndEmptiesTheUnit)
{
    const Config config = FromEngine(Form(Item("Calibration", "")));
    EXPECT_EQ(config.GetCalibration().PhysicalHeight(), 175);
    EXPECT_EQ(config.GetCalibration().PhysicalHeightUnit(), "");
    const std::string unit = "<tt:SimpleItem Name='Unit' Value='in'/>";
    const Config unitAlone = FromEngine(Form(Item("Calibration", Item("PhysicalHeight", unit))));
    EXPECT_EQ(unitAlone.GetCalibration().PhysicalHeight(), 175);
    EXPECT_EQ(unitAlone.GetCalibration().PhysicalHeightUnit(), "in");
}

TEST_F(SceneAnalyzerOnvifDoc, AnyNumberButZeroIsCalibratedAndWrittenAsOne)
{
    const Config config =
        FromEngine(Form(Item("Calibration", "<tt:SimpleItem Name='Calibrated' Value='2'/>")));
    EXPECT_TRUE(config.GetCalibration().Calibrated());
    EXPECT_THAT(ToEngine(config), HasSubstr("<tt:SimpleItem Name=\"Calibrated\" Value=\"1\"/>"));
}

TEST_F(SceneAnalyzerOnvifDoc, WhatHasNoSceneIsRefusedAndLeavesTheConfig)
{
    const std::string other =
        kRoot + std::string("<tt:AnalyticsModule Type='com.varlo.engine.sceneanalyzer2'/></tt:C>");
    for (const std::string& text : {std::string(), std::string("<"), std::string(kRoot) + "</tt:C>", other,
                                    std::string("<analyticProfile/>")})
    {
        Config config;
        config.Tuning(2);
        config.CameraPreset("p");
        const std::string before = Text(config);
        EXPECT_FALSE(OnvifDoc().DocToConfig(text, config)) << text;
        EXPECT_EQ(Text(config), before);
    }
}

TEST_F(SceneAnalyzerOnvifDoc, WithoutAUsableDefaultConfigurationNothingIsWritten)
{
    for (const std::string& text : {std::string(), std::string("<"), std::string(kRoot) + "</tt:C>"})
    {
        Engine() = text;
        std::string xml = "before";
        EXPECT_FALSE(OnvifDoc().ConfigToDoc(Config(), xml)) << text;
        EXPECT_EQ(xml, "before");
    }
    m_platform.plugins.clear();
    std::string xml = "before";
    EXPECT_FALSE(OnvifDoc().ConfigToDoc(Config(), xml));
    EXPECT_EQ(xml, "before");
}

TEST_F(SceneAnalyzerOnvifDoc, EmptyEngineTakesNothingAndNothingFails)
{
    Config config;
    config.Tuning(2);
    config.MinObjectSize(kLine);
    config.GetCalibration().Calibrated(true);
    config.AddExcludeZone({{1, 1}});
    Engine() = Form("");
    EXPECT_EQ(Text(FromEngine(ToEngine(config))), Text(Config()));
    Engine() = Form(Item("Calibration", Item("PhysicalHeight", "")) + Item("ObjectSizeFilters", ""));
    EXPECT_THAT(ToEngine(config), Not(HasSubstr("Point")));
}

TEST_F(SceneAnalyzerOnvifDoc, OperationsIgnoreNull)
{
    analytics::ProfileDoc doc;
    ASSERT_TRUE(doc.ParseString(Form("")));
    const std::string before = doc.DumpToString();
    const std::unique_ptr<analytics::DocumentNode> node(doc.SelectEngine(Config::Id()));
    scene::Calibration calibration;
    Polygon polygon;
    for (analytics::ProfileDoc* document : {&doc, static_cast<analytics::ProfileDoc*>(nullptr)})
    {
        analytics::DocumentNode* const context = document == nullptr ? node.get() : nullptr;
        OnvifDoc().NodeToCalibration(calibration, context, document);
        OnvifDoc().CalibrationToNode(calibration, context, document);
        OnvifDoc().LineToNode(kLine, "Line", "NearWidth", context, document);
        OnvifDoc().PolygonToNode({{1, 2}}, context, document);
        OnvifDoc().NodeToPolygon(polygon, context, document);
        EXPECT_EQ(OnvifDoc().SelectCalibrationNode(context, document), nullptr);
    }
    EXPECT_EQ(calibration.PhysicalHeightUnit(), "cm");
    EXPECT_TRUE(polygon.empty());
    EXPECT_EQ(doc.DumpToString(), before);
}

} // namespace
