#include "Documents.h"
#include "Drawn.h"
#include "Failure.h"
#include "documents/Check.h"
#include "documents/DocumentJson.h"

namespace client
{
namespace
{

using testing::HasSubstr;

constexpr Finding::Level kError = Finding::Level::Error;
constexpr Finding::Level kWarning = Finding::Level::Warning;

// One mistake in an example, and what is said of it.
struct Mistake
{
    const char* document;
    const char* text;
    const char* instead;
    Finding::Level level;
    const char* field;
    const char* said;
};

const Mistake kMistakes[] = {
    // Flags and numbers.
    {"loitering", "active=\"1\"", "active=\"true\"", kError, "/active", "neither 0 nor 1"},
    {"loitering", "active=\"1\"", "active=\"2\"", kError, "/active", "neither 0 nor 1"},
    {"loitering", "active=\"1\"", "active=\"\"", kError, "/active", "neither 0 nor 1"},
    {"loitering", "<enable>1<", "<enable>yes<", kError, "/rois/0/enable", "neither 0 nor 1"},
    {"loitering", "<enable>1<", "<enable>-1<", kError, "/rois/0/enable", "neither 0 nor 1"},
    {"object-counting", "<countReset>0<", "<countReset>2<", kError, "/rois/0/countReset", "neither 0 nor 1"},
    {"stopped-vehicle", "advanceMode=\"0\"", "advanceMode=\"on\"", kError, "/advanceMode", "neither 0 nor 1"},
    {"scene", "calibrated=\"0\"", "calibrated=\"7\"", kError, "/calibration/calibrated", "neither 0 nor 1"},
    {"loitering", "<alarmSeverity>0<", "<alarmSeverity>7<", kError, "/rois/0/alarmSeverity", "3 critical"},
    {"loitering", "<alarmSeverity>0<", "<alarmSeverity>-1<", kError, "/rois/0/alarmSeverity", "0 minor"},
    {"camera-sabotage", "<alarmSeverity>0<", "<alarmSeverity>4<", kError, "/alarmSeverity", "3 critical"},
    {"loitering", ">300<", ">99999999999<", kError, "/rois/0/alarmDelay", "no integer from"},
    {"loitering", ">300<", ">five<", kError, "/rois/0/alarmDelay", "count as missing"},
    {"loitering", ">300<", ">5.5<", kError, "/rois/0/alarmDelay", "no integer"},
    {"loitering", ">300<", ">0x10<", kError, "/rois/0/alarmDelay", "no integer"},
    {"loitering", ">300<", "><", kError, "/rois/0/alarmDelay", "no integer"},
    {"loitering", "<x>40<", "<x>left<", kError, "/rois/0/vertices/0/0", "no integer"},
    {"object-removal", "<sensitivity>5<", "<sensitivity>high<", kError, "/sensitivity", "no integer"},
    {"scene", ">175<", ">tall<", kError, "/calibration/objectsizes/physicalHeight", "no integer"},
    // Names and places.
    {"loitering", "<dwellTime min=\"5\" max=\"1000\">5</dwellTime>", "<dweltime>45</dweltime>", kError,
     "/rois/0/dweltime", "did you mean <dwellTime>?"},
    {"loitering", "<enable>1</enable>", "<Enable>1</Enable>", kError, "/rois/0/Enable",
     "did you mean <enable>?"},
    {"loitering", "<enable>1</enable>", "<active>1</active>", kError, "/rois/0/active",
     "isn't known in <roi>"},
    {"loitering", "<rois>", "<rois><x>1</x>", kError, "/rois/0", "isn't known in <rois>"},
    {"loitering", "<excludeZones />", "<excludeZones><excludeZone/></excludeZones>", kError,
     "/excludeZones/excludeZone", "isn't known in <excludeZones>"},
    {"loitering", "<excludeZones />", "<sensitivity>9</sensitivity>", kError, "/sensitivity",
     "isn't known in <behavior>"},
    {"loitering", "<minPoints>", "<roi/><minPoints>", kError, "/roi", "it belongs in <rois>"},
    {"loitering", "<name>Zone 1</name>", "<name>Zone 1</name><rois/>", kError, "/rois/0/rois",
     "it belongs in <behavior>"},
    {"loitering", "<enable>1</enable>", "<enable>1</enable><enable>0</enable>", kError, "/rois/0/enable",
     "more than once"},
    {"loitering", "<excludeZones />", "<excludeZones /><rois/>", kError, "/rois", "more than once"},
    {"stopped-vehicle", "<name>maxObj<", "<name>biggest<", kError, "/filters/objectsizes/objectsize",
     "known are minObj, maxObj"},
    {"stopped-vehicle", "<name>maxObj<", "<name>minObj<", kError, "/filters/objectsizes/minObj",
     "more than once"},
    {"object-counting", "<name>avgObj</name>", "", kError, "/filters/objectsizes/objectsize",
     "known are avgObj"},
    {"scene", "<fovs>", "<fovs><fov><name>width</name></fov>", kError, "/calibration/fovs/fov",
     "known are nearWidth, farWidth"},
    {"loitering", "active=\"1\"", "activ=\"1\"", kError, "/activ", "did you mean 'active'?"},
    {"loitering", "<roi>", "<roi id=\"4\">", kError, "/rois/0/id", "the attribute 'id' isn't known in <roi>"},
    {"loitering", "<vertex>", "<vertex x=\"4\">", kError, "/rois/0/vertices/0",
     "'x' isn't known in <vertex>"},
    {"loitering", "<x>40</x>", "", kError, "/rois/0/vertices/0", "no <x>"},
    {"loitering", "<x>40</x>", "<x>40</x><x>50</x>", kError, "/rois/0/vertices/0", "more than one <x>"},
    {"loitering", "<x>40</x>", "<x>40</x><z>1</z>", kError, "/rois/0/vertices/0", "it holds x and y"},
    {"loitering", "<vertices>", "<vertices><point/>", kError, "/rois/0/vertices", "it may hold vertex"},
    {"loitering", "<roi>", "<roi>here", kError, "/rois/0", "the text 'here'"},
    {"stopped-vehicle", "<name>Exclude 1</name>", "<name>Exclude 1</name><enable>1</enable>", kError,
     "/excludeZones/0/enable", "it belongs in <roi>"},
    // Whose document it is, and what is constant.
    {"loitering", "LoiteringDetection", "ObjectCounting", kError, "/id", "ObjectCounting:1', not of"},
    {"loitering", " id=\"urn:varlo-com:AlgorithmId:LoiteringDetection:1\"", "", kError, "/id",
     "the id is missing"},
    {"loitering", "<behavior ", "<behavior xmlns=\"urn:x\" ", kError, "", "the namespace 'urn:x'"},
    {"loitering", "<minPoints>3<", "<minPoints>4<", kError, "/minPoints", "nothing but '3'"},
    {"loitering", "version=\"2.0\"", "version=\"3.0\"", kError, "/version", "nothing but '2.0'"},
    {"loitering", "advanceMode=\"0\"", "advanceMode=\"1\"", kError, "/advanceMode", "nothing but '0'"},
    {"loitering", "max=\"1000\"", "max=\"2000\"", kError, "/rois/0/max", "nothing but '1000'"},
    {"directional-motion", "<include>1<", "<include>0<", kError, "/rois/0/include", "nothing but '1'"},
    // Likely wrong.
    {"loitering", ">300<", ">5000<", kWarning, "/rois/0/alarmDelay", "30 to 1800"},
    {"directional-motion", "<direction>0<", "<direction>8<", kWarning, "/rois/0/direction", "0 to 7"},
    {"adaptive-motion", "<direction>8<", "<direction>9<", kWarning, "/rois/0/direction", "0 to 8"},
    {"object-removal", "<sensitivity>5<", "<sensitivity>0<", kWarning, "/sensitivity", "1 to 10"},
    {"directional-motion", "<objectSpeed>5<", "<objectSpeed>11<", kWarning, "/objectSpeed", "1 to 10"},
    {"object-counting", "<alarmCount>1<", "<alarmCount>-1<", kWarning, "/rois/0/alarmCount", "1 or more"},
    {"camera-sabotage", "<alarmDelay>3<", "<alarmDelay>-3<", kWarning, "/alarmDelay", "0 or more"},
    {"scene", "<sceneType>0<", "<sceneType>3<", kWarning, "/sceneType", "0 to 2"},
    {"scene", "<background>0<", "<background>2<", kWarning, "/background", "0 to 1"},
    {"scene", "<tuning>0<", "<tuning>-1<", kWarning, "/tuning", "0 to 2"},
    {"loitering", "<x>40<", "<x>-40<", kWarning, "/rois/0/vertices/0", "outside of the frame of 320x240"},
    {"loitering", "<x>280<", "<x>321<", kWarning, "/rois/0/vertices/1", "outside of the frame"},
    {"stopped-vehicle", "<x>0<", "<x>900<", kWarning, "/filters/objectsizes/minObj/0",
     "outside of the frame"},
};

class MistakesTest : public testing::TestWithParam<Mistake>
{
};

TEST_P(MistakesTest, IsToldOnceWithItsPlaceAndCause)
{
    const Mistake& mistake = GetParam();
    const std::string text = ExampleWith(mistake.document, mistake.text, mistake.instead);
    const DocumentModel& model =
        std::string(mistake.document) == "scene" ? SceneModel() : *FindModel(mistake.document);
    const XmlDocument document(text, "test");
    const Findings findings = Check(model, document, Frame());
    ASSERT_EQ(findings.size(), 1U) << text;
    EXPECT_EQ(findings.front().level, mistake.level);
    EXPECT_EQ(findings.front().field, mistake.field);
    EXPECT_THAT(findings.front().text, HasSubstr(mistake.said));
    EXPECT_GT(findings.front().line, 0);
    EXPECT_THROW(Judge({"test", text}, findings, {Frame(), true, false, false}), Failure);
    EXPECT_EQ(HasErrors(findings), mistake.level == kError);
}

INSTANTIATE_TEST_SUITE_P(All, MistakesTest, testing::ValuesIn(kMistakes));

// The same in JSON.
struct JsonMistake
{
    const char* document;
    const char* pointer;
    const char* value;
    Finding::Level level;
    const char* field;
    const char* said;
};

const JsonMistake kJsonMistakes[] = {
    {"loitering", "/active", "\"1\"", kError, "/active", "has to be 0 or 1"},
    {"loitering", "/active", "7", kError, "/active", "neither 0 nor 1"},
    {"loitering", "/rois/0/dwellTime", "\"45\"", kError, "/rois/0/dwellTime", "has to be an integer"},
    {"loitering", "/rois/0/dwellTime", "4.5", kError, "/rois/0/dwellTime", "has to be an integer"},
    {"loitering", "/rois/0/dwellTime", "1e30", kError, "/rois/0/dwellTime", "has to be an integer"},
    {"loitering", "/rois/0/dwellTime", "99999999999", kError, "/rois/0/dwellTime", "no integer from"},
    {"loitering", "/rois/0/dwellTime", "true", kError, "/rois/0/dwellTime", "has to be an integer"},
    {"loitering", "/rois/0/dweltime", "45", kError, "/rois/0/dweltime", "did you mean <dwellTime>?"},
    {"loitering", "/rois/0/dwell time", "45", kError, "/rois/0/dwell time", "isn't known here"},
    {"loitering", "/rois/0/name", "5", kError, "/rois/0/name", "has to be a text"},
    {"loitering", "/rois/0/name", "\"a\\u0001\"", kError, "/rois/0/name", "control characters"},
    {"loitering", "/rois/0/vertices/1", "[1]", kError, "/rois/0/vertices/1", "has to be a point"},
    {"loitering", "/rois/0/vertices/1", "[1,\"2\"]", kError, "/rois/0/vertices/1", "has to be a point"},
    {"loitering", "/rois/0/vertices", "{}", kError, "/rois/0/vertices", "a list of points"},
    {"loitering", "/rois/0", "[]", kError, "/rois/0", "has to be an object"},
    {"loitering", "/rois", "{}", kError, "/rois", "has to be a list"},
    {"loitering", "/id", "\"urn:x\"", kError, "/id", "the behavior 'urn:x'"},
    {"stopped-vehicle", "/filters/objectsizes/minObj", "[[1,1]]", kError,
     "/filters/objectsizes/minObj/vertices", "has two"},
    {"stopped-vehicle", "/excludeZones/0", "[]", kError, "/excludeZones/0", "would be dropped"},
    {"stopped-vehicle", "/sensitivity", "20", kWarning, "/sensitivity", "1 to 10"},
    {"scene", "/calibration/objectsizes/unit", "5", kError, "/calibration/objectsizes/unit",
     "has to be a text"},
};

class JsonMistakesTest : public testing::TestWithParam<JsonMistake>
{
};

TEST_P(JsonMistakesTest, IsToldWithItsPointer)
{
    const JsonMistake& mistake = GetParam();
    const DocumentModel& model =
        std::string(mistake.document) == "scene" ? SceneModel() : *FindModel(mistake.document);
    Json json = ToJson(model, Example(model, Frame()));
    json[Json::json_pointer(mistake.pointer)] = Json::parse(mistake.value);
    const Findings findings = FindingsOf({"test", json.dump()}, model, Frame());
    ASSERT_GE(findings.size(), 1U) << json.dump(2);
    EXPECT_EQ(findings.front().level, mistake.level);
    EXPECT_EQ(findings.front().field, mistake.field);
    EXPECT_THAT(findings.front().text, HasSubstr(mistake.said));
    EXPECT_EQ(findings.front().line, 0);
}

INSTANTIATE_TEST_SUITE_P(All, JsonMistakesTest, testing::ValuesIn(kJsonMistakes));

// Zones of other shapes, and what is said of them.
std::string SaidOf(const char* behavior, const std::string& points, const std::string& excluded = "[]")
{
    const DocumentModel& model = *FindModel(behavior);
    Json json = ToJson(model, Example(model, Frame()));
    json["rois"][0]["vertices"] = Json::parse(points);
    if (model.HasExcludeZones())
        json["excludeZones"] = Json::parse(excluded);
    std::string said;
    for (const Finding& finding : FindingsOf({"test", json.dump()}, model, Frame()))
    {
        EXPECT_EQ(finding.level, kWarning);
        said += finding.text + ";";
    }
    return said;
}

TEST(ZonesTest, ShapesThatCanHardlyBeMeant)
{
    EXPECT_EQ(SaidOf("loitering", "[[10,10],[90,10],[90,90]]"), "");
    EXPECT_EQ(SaidOf("adaptive-motion", "[[10,10],[90,10]]"), "");
    EXPECT_THAT(SaidOf("loitering", "[[10,10],[90,10]]"), HasSubstr("has 2 points, too few; 3 to 6"));
    EXPECT_THAT(SaidOf("loitering", "[]"), HasSubstr("has 0 points, too few"));
    EXPECT_THAT(SaidOf("loitering", "[[1,1],[9,1],[9,2],[9,3],[9,4],[9,5],[1,6]]"),
                HasSubstr("7 points, too many"));
    EXPECT_EQ(SaidOf("loitering", "[[10,10],[90,90],[90,10],[10,90]]"), "the zone 'Zone 1' crosses itself;");
    EXPECT_EQ(SaidOf("loitering", "[[10,10],[50,50],[90,90]]"), "the zone 'Zone 1' has no area;");
    EXPECT_EQ(SaidOf("loitering", "[[10,10],[90,10],[90,90],[10,10]]"),
              "the zone 'Zone 1' has the point 10, 10 twice;");
    EXPECT_EQ(SaidOf("adaptive-motion", "[[10,10],[10,10]]"),
              "the zone 'Zone 1' has the point 10, 10 twice;");
}

TEST(ZonesTest, ExcludeZonesThatLeaveNothing)
{
    const std::string zone = "[[10,10],[90,10],[90,90],[10,90]]";
    EXPECT_EQ(SaidOf("stopped-vehicle", zone, "[[[10,10],[50,10],[50,50]]]"), "");
    EXPECT_THAT(SaidOf("stopped-vehicle", zone, "[" + zone + "]"), HasSubstr("covered by exclude zones"));
    EXPECT_THAT(
        SaidOf("stopped-vehicle", zone, "[[[0,0],[60,0],[60,99],[0,99]],[[50,0],[99,0],[99,99],[50,99]]]"),
        HasSubstr("covered by exclude zones"));
    EXPECT_EQ(
        SaidOf("stopped-vehicle", zone, "[[[0,0],[60,0],[60,99],[0,99]],[[61,0],[99,0],[99,99],[61,99]]]"),
        "");
    EXPECT_THAT(SaidOf("stopped-vehicle", zone, "[[[0,0],[60,0]]]"),
                HasSubstr("the exclude zone 1 has 2 points"));
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
