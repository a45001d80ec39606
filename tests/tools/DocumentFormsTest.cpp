#include "Behaviors.h"
#include "Drawn.h"
#include "Failure.h"
#include "Text.h"
#include "documents/Check.h"
#include "documents/Compare.h"
#include "documents/Fields.h"
#include "documents/ZoneEdit.h"

namespace client
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

std::string XmlOf(const DocumentModel& model, const Json& json)
{
    Findings findings;
    const std::string text = XmlDocument(FromJson(model, json, findings)).Text();
    EXPECT_THAT(findings, IsEmpty());
    return text;
}

TEST(ModelsTest, AreLearnedFromTheConverters)
{
    EXPECT_GE(BehaviorModels().size(), 8U);
    const DocumentModel& loitering = *FindModel("loitering");
    EXPECT_EQ(loitering.alias, "urn:varlo-com:AlgorithmId:LoiteringDetection:1");
    EXPECT_EQ(loitering.ZonePoints(), (Bounds{3, 6}));
    EXPECT_FALSE(loitering.HasExcludeZones());
    EXPECT_TRUE(FindModel("stopped-vehicle")->HasExcludeZones());
    EXPECT_FALSE(FindModel("camera-sabotage")->HasZones());
    const Element& roi = loitering.root.Child("rois")->children.front();
    EXPECT_EQ(roi.Child("dwellTime")->value.front().advised, (Bounds{5, 1000}));
    EXPECT_EQ(roi.Child("alarmDelay")->value.front().value, "300");
    EXPECT_EQ(roi.Child("alarmSeverity")->value.front().accepted, (Bounds{0, 3}));
    EXPECT_EQ(roi.Child("enable")->value.front().kind, Field::Kind::Flag);
    EXPECT_EQ(roi.Child("name")->value.front().value, "");
    EXPECT_EQ(SceneModel().root.Child("cameraPreset")->value.front().kind, Field::Kind::Assigned);
}

TEST(ModelsTest, EveryFieldHasAMeaning)
{
    for (const DocumentModel& model : AllModels())
        for (const DocumentField& field : FieldsOf(model))
            EXPECT_FALSE(field.meaning->text.empty()) << model.name << ' ' << field.path;
}

TEST(BehaviorsTest, NamesAndIdentifiersMeanTheSame)
{
    for (const std::string& name : BehaviorNames())
        EXPECT_EQ(BehaviorName(BehaviorId(name)), name);
    EXPECT_EQ(BehaviorName("com.varlo.rule.stoppedvehicle"), "stopped-vehicle");
    EXPECT_EQ(BehaviorId("Stopped Vehicle"), "urn:varlo-com:AlgorithmId:StoppedVehicle:1");
    EXPECT_EQ(BehaviorId("LoiteringDetection"), "urn:varlo-com:AlgorithmId:LoiteringDetection:1");
    EXPECT_EQ(BehaviorCalled("urn:else:1"), "urn:else:1");
    EXPECT_THROW(BehaviorId("else"), Failure);
}

TEST(ExamplesTest, PassEveryCheckInAnyFrame)
{
    for (const DocumentModel& model : AllModels())
        for (const Frame& frame : {Frame(), Frame{1920, 1080}, Frame{64, 48}})
            for (const Finding& finding : Check(model, XmlDocument(Example(model, frame), "x"), frame))
                ADD_FAILURE() << model.name << ": " << finding.text;
}

TEST(ExamplesTest, HaveALineWhereAZoneHasTwoPoints)
{
    DocumentModel model = *FindModel("adaptive-motion");
    for (Element& child : model.root.children)
        if (child.name == "maxPoints")
            child.value.front().value = "2";
    const XmlDocument example(Example(model, Frame()), "the example");
    EXPECT_EQ(Children(example.First("vertices"), "vertex").size(), 2U);
    EXPECT_THAT(Check(model, example, Frame()), IsEmpty());
    const XmlDocument zone(Example(*FindModel("adaptive-motion"), Frame()), "the example");
    EXPECT_THAT(
        Check(model, zone, Frame()),
        testing::Contains(testing::Field(&Finding::text, testing::HasSubstr("too many; 2 are advised"))));
}

TEST(JsonFormTest, IsTheSameDocument)
{
    for (const DocumentModel& model : AllModels())
    {
        const std::string example = Example(model, Frame());
        const Json json = ToJson(model, example);
        EXPECT_TRUE(SameMeaning(model, example, XmlOf(model, json))) << json.dump(2);
        EXPECT_EQ(ToJson(model, XmlOf(model, json)), json);
        EXPECT_THAT(Check(model, XmlDocument(XmlOf(model, json), "x"), Frame()), IsEmpty());
    }
}

TEST(JsonFormTest, HasZonesAsListsOfPoints)
{
    const DocumentModel& model = *FindModel("stopped-vehicle");
    const Json json = ToJson(model, Example(model, Frame()));
    EXPECT_EQ(json["active"], 1);
    EXPECT_EQ(json["rois"][0]["vertices"], Json::parse("[[40,40],[280,40],[280,200],[40,200]]"));
    EXPECT_EQ(json["excludeZones"], Json::parse("[[[240,160],[280,160],[280,200],[240,200]]]"));
    EXPECT_EQ(json["filters"]["objectsizes"]["minObj"], Json::parse("[[0,0],[0,0]]"));
    EXPECT_FALSE(json.contains("minPoints"));
    EXPECT_TRUE(json["rois"][0].contains("dwellTime"));
}

TEST(CompareTest, WhatIsMissingIsTheDefault)
{
    const DocumentModel& model = *FindModel("stopped-vehicle");
    const std::string front = "<behavior id='com.varlo.rule.stoppedvehicle' ";
    const std::string roi = "<rois><roi><name>a</name></roi></rois>";
    EXPECT_TRUE(SameMeaning(model, front + "active='1'>" + roi + "</behavior>",
                            front + "active='7' advanceMode='0'>\n<sensitivity> +5</sensitivity>" + roi +
                                "</behavior>"));
    EXPECT_FALSE(
        SameMeaning(model, front + "active='1'>" + roi + "</behavior>", front + ">" + roi + "</behavior>"));
    // Without points, the largest object is the smallest one.
    const std::string smallest =
        "<filters><objectsizes><objectsize><name>minObj</name><vertices><vertex><x>1</x><y>2</y>"
        "</vertex><vertex><x>3</x><y>4</y></vertex></vertices></objectsize></objectsizes></filters>";
    const Json normalised = Normalised(model, front + ">" + roi + smallest + "</behavior>");
    EXPECT_EQ(normalised["filters"]["objectsizes"]["maxObj"], Json::parse("[[1,2],[3,4]]"));
}

TEST(CompareTest, AnIdleBehaviorIsAMissingOne)
{
    const DocumentModel& model = *FindModel("loitering");
    EXPECT_TRUE(IsIdle(model, ""));
    EXPECT_TRUE(IsIdle(model, "<behavior id='x' active='0'><rois/></behavior>"));
    EXPECT_FALSE(IsIdle(model, "<behavior id='x' active='1'><rois/></behavior>"));
    EXPECT_FALSE(IsIdle(model, "<behavior id='x'><rois><roi/></rois></behavior>"));
    EXPECT_TRUE(SameMeaning(SceneModel(), "<analyticProfile name='a'/>",
                            "<analyticProfile name='b'><cameraPreset>4</cameraPreset></analyticProfile>"));
}

std::vector<std::string> Changed(const std::string& sent, const std::string& stored)
{
    std::vector<std::string> changes;
    for (const Change& change : Changes(*FindModel("loitering"), "<behavior>" + sent + "</behavior>",
                                        "<behavior>" + stored + "</behavior>"))
        changes.push_back(change.node + " " + change.sent + " " + change.stored);
    return changes;
}

TEST(ChangesTest, OnlyWhatWasSentAndMeansSomethingElseIsAChange)
{
    EXPECT_THAT(Changed("<b x='1'>5</b><c/>", "\n<c/> <b x='+1' y='2'> 05 </b><d>6</d>"), IsEmpty());
    EXPECT_THAT(Changed("<b x='1'>5</b>", "<b>6</b><c>1</c>"),
                ElementsAre("/behavior/b/@x 1 (nothing)", "/behavior/b 5 6"));
    const std::string one = "<z><name>one</name><v>1</v></z>", two = "<z><name>two</name><v>2</v></z>";
    EXPECT_THAT(Changed("<a>" + one + two + "</a>", "<a>" + two + one + "</a>"), IsEmpty());
    EXPECT_THAT(Changed("<a>" + one + two + "</a>", "<a>" + two + "</a>"),
                ElementsAre("/behavior/a/z[1]/name one two", "/behavior/a/z[1]/v 1 2",
                            "/behavior/a/z[2] (the element named two) (nothing)"));
}

TEST(FrameTest, EachAxisIsScaledByItsOwnFactorToTheNearest)
{
    const std::string zone = "<a><vertex><x>3</x><y>-5</y></vertex><vertex><x>many</x></vertex><x>3</x></a>";
    EXPECT_EQ(
        XmlDocument(Scaled(zone, {320, 240}, {480, 120}), "x").Indented(),
        XmlDocument("<a><vertex><x>5</x><y>-3</y></vertex><vertex><x>many</x></vertex><x>3</x></a>", "x")
            .Indented());
    EXPECT_EQ(ParseFrame("640x360", "x"), (Frame{640, 360}));
    for (const char* const text :
         {"", "640", "640x", "x360", "0x10", "10x-1", "640X360", "640x360 ", "1e3x4", "999999x1"})
        EXPECT_THROW(ParseFrame(text, "x"), Failure) << text;
}

TEST(ZoneEditTest, ChangesOneZoneAndNothingElse)
{
    const DocumentModel& model = *FindModel("stopped-vehicle");
    const std::string one = WithZone(model, "", {"Gate", false, {{1, 1}, {9, 1}, {9, 9}}});
    EXPECT_TRUE(IsActive(model, one));
    EXPECT_THAT(Check(model, XmlDocument(one, "x"), Frame()), IsEmpty());
    const std::string two = WithZone(model, one, {"", true, {{2, 2}, {3, 2}, {3, 3}}});
    const std::string three = WithZone(model, two, {"", true, {{5, 2}, {6, 2}, {6, 3}}});
    EXPECT_EQ(ZonesOf(model, three).size(), 3U);
    EXPECT_EQ(ZonesOf(model, three).back().name, "Exclude 2");
    EXPECT_TRUE(
        SameMeaning(model, WithoutZone(model, WithoutZone(model, three, "Exclude 2"), "Exclude 1"), one));
    EXPECT_EQ(ZonesOf(model, WithoutZone(model, three, "Exclude 1")).back().name, "Exclude 1");
    EXPECT_EQ(ZoneNamed(model, WithPoints(model, three, {"Gate", false, {{4, 4}, {8, 4}, {8, 8}}}), "Gate")
                  .points.front(),
              (Point{4, 4}));
    EXPECT_THROW(WithZone(model, one, {"Gate", false, {}}), Failure);
    EXPECT_THROW(WithoutZone(model, one, "Fence"), Failure);
    EXPECT_THROW(WithZone(*FindModel("loitering"), "", {"", true, {}}), Failure);
    EXPECT_THROW(WithZone(*FindModel("camera-sabotage"), "", {"a", false, {}}), Failure);
}

TEST(TextTest, WhatWouldControlATerminalIsShownAsANumber)
{
    EXPECT_EQ(Printable("a\x1b[2J\xc2\x9b\n\xe2\x80\xae\xff\xc0\x80\xed\xa0\x80"),
              "a<U+001B>[2J<U+009B><U+000A><U+202E>"
              "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
    EXPECT_EQ(Printable("a\n\tb\r", true), "a\n\tb<U+000D>");
    EXPECT_EQ(Printable("\xc3\xa9\xe4\xb8\xad\xf0\x9f\x98\x80"), "\xc3\xa9\xe4\xb8\xad\xf0\x9f\x98\x80");
}

} // namespace
} // namespace client
