#include "Documents.h"
#include "Drawn.h"
#include "documents/DocumentJson.h"

namespace client
{
namespace
{

Findings FindingsWith(const char* behavior, const std::string& points, const std::string& excluded = "[]")
{
    const DocumentModel& model = *FindModel(behavior);
    Json json = ToJson(model, Example(model, Frame()));
    json["rois"][0]["vertices"] = Json::parse(points);
    if (model.HasExcludeZones())
        json["excludeZones"] = Json::parse(excluded);
    return FindingsOf({"test", json.dump()}, model, Frame());
}

TEST(ZonesTest, ShapesThatCanBeMeantAreNotWarnedOf)
{
    const std::string zone = "[[10,10],[90,10],[90,90],[10,90]]";
    EXPECT_TRUE(FindingsWith("loitering", "[[10,10],[90,10],[90,90]]").empty());
    EXPECT_TRUE(FindingsWith("adaptive-motion", "[[10,10],[90,10]]").empty());
    EXPECT_TRUE(FindingsWith("stopped-vehicle", zone, "[[[10,10],[50,10],[50,50]]]").empty());
    // A strip of one pixel is left.
    EXPECT_TRUE(FindingsWith("stopped-vehicle", zone,
                             "[[[0,0],[60,0],[60,99],[0,99]],[[61,0],[99,0],[99,99],[61,99]]]")
                    .empty());
}

TEST(ZonesTest, AreMeasuredInTheFrame)
{
    const DocumentModel& model = *FindModel("loitering");
    const std::string large = Example(model, Frame{640, 480});
    EXPECT_TRUE(FindingsOf({"test", large}, model, Frame{640, 480}).empty());
    EXPECT_EQ(FindingsOf({"test", large}, model, Frame()).size(), 3U);
}

} // namespace
} // namespace client
