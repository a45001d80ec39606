#include "Check.h"
#include "Behaviors.h"
#include "Changes.h"
#include "Failure.h"
#include "Text.h"
#include "XmlDocument.h"

#include <gmock/gmock.h>

namespace client
{
namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

constexpr char kModel[] = R"(<behavior id="a" active="0"><minPoints>2</minPoints><maxPoints>3</maxPoints>
    <rois><roi><name>Zone</name><delay min="-5" max="10">3</delay>
    <vertices><vertex><x>1</x><y>1</y></vertex></vertices></roi></rois><excludeZones/></behavior>)";

// Line and beginning of each finding.
std::vector<std::pair<long, std::string>> Found(const std::string& text)
{
    Model model;
    model.Learn(XmlDocument(kModel, "model").First("behavior"));
    const XmlDocument document(text, "test");
    std::vector<std::pair<long, std::string>> found;
    for (const Finding& finding : Check(document.First("behavior"), model))
        found.emplace_back(finding.line, finding.text);
    return found;
}

std::string Zone(int points, const std::string& inside = "")
{
    std::string vertices;
    for (int i = 0; i < points; ++i)
        vertices += "<vertex><x>1</x><y>2</y></vertex>";
    return "<roi><name>5</name>" + inside + "<vertices>" + vertices + "</vertices></roi>";
}

std::string Document(const std::string& rois)
{
    return "<behavior id='a' active='1'>\n<rois>\n" + rois + "</rois></behavior>";
}

TEST(CheckTest, ADocumentOfTheModelIsWithoutFindings)
{
    EXPECT_THAT(Found(kModel), ElementsAre(Pair(2, HasSubstr("too few")))); // its zone is a sketch
    EXPECT_THAT(Found(Document(Zone(2, "<delay>-5</delay>") + Zone(3, "<delay> +10 </delay>"))), IsEmpty());
}

TEST(CheckTest, ValuesBesideTheAdvisedOnesAreFound)
{
    EXPECT_THAT(Found(Document(Zone(2, "<delay>-6</delay>\n<delay>11</delay>"))),
                ElementsAre(Pair(3, HasSubstr("<delay> is -6, the advised values are -5 to 10")),
                            Pair(4, HasSubstr("<delay> is 11"))));
    EXPECT_THAT(Found(Document(Zone(2, "<delay>many</delay>"))),
                ElementsAre(Pair(3, HasSubstr("no integer"))));
    EXPECT_THAT(Found(Document(Zone(2, "<delay min='0' max='99'>50</delay>"))),
                ElementsAre(Pair(3, HasSubstr("50"))));
}

TEST(CheckTest, ZonesOfTooFewOrTooManyPointsAreFound)
{
    EXPECT_THAT(Found(Document(Zone(1) + "\n" + Zone(4) + "\n<roi/>")),
                ElementsAre(Pair(3, HasSubstr("'5' has 1 point, too few; 2 to 3")),
                            Pair(4, HasSubstr("4 points, too many")),
                            Pair(5, HasSubstr("0 points, too few"))));
}

TEST(CheckTest, ElementsAndAttributesThatNobodyKnowsAreFound)
{
    EXPECT_THAT(Found(Document(Zone(2, "\n<dealy>3</dealy>"))),
                ElementsAre(Pair(4, HasSubstr("<dealy> isn't known in <roi>"))));
    EXPECT_THAT(Found("<behavior id='a' activ='1'><rois/></behavior>"),
                ElementsAre(Pair(1, HasSubstr("'activ'"))));
    // Of what is empty in all that is known, nothing is known.
    EXPECT_THAT(Found("<behavior id='a'><excludeZones><b><c/></b></excludeZones></behavior>"), IsEmpty());
}

TEST(BehaviorsTest, NamesAndIdentifiersMeanTheSame)
{
    for (const std::string& name : BehaviorNames())
    {
        const std::string id = BehaviorId(name);
        EXPECT_EQ(BehaviorName(id), name);
        const std::vector<Finding> findings =
            Check(XmlDocument(BehaviorExample(id), name).First("behavior"), BehaviorModel(id, {}));
        for (const Finding& finding : findings)
            ADD_FAILURE() << name << ':' << finding.line << ": " << finding.text;
    }
    EXPECT_EQ(BehaviorName("com.varlo.rule.stoppedvehicle"), "stopped-vehicle");
    EXPECT_EQ(BehaviorId("Stopped Vehicle"), "urn:varlo-com:AlgorithmId:StoppedVehicle:1");
    EXPECT_EQ(BehaviorId("urn:else:1"), "urn:else:1");
    EXPECT_EQ(BehaviorCalled("urn:else:1"), "urn:else:1");
    EXPECT_THROW(BehaviorId("else"), Failure);
}

std::vector<std::string> Changed(const std::string& sent, const std::string& stored)
{
    const XmlDocument before(sent, "sent");
    const XmlDocument after(stored, "stored");
    std::vector<std::string> changes;
    for (const Change& change : Changes(before.First("a"), after.First("a")))
        changes.push_back(change.node + " " + change.sent + " " + change.stored);
    return changes;
}

TEST(ChangesTest, OnlyWhatMeansSomethingElseIsAChange)
{
    EXPECT_THAT(Changed("<a x='1'><b>5</b><c/></a>", "<a x='+1' y='2'>\n<c/> <b> 05 </b></a>"), IsEmpty());
    EXPECT_THAT(Changed("<a x='1'><b>5</b></a>", "<a><b>6</b><c>1</c></a>"),
                ElementsAre("/a/@x 1 (nothing)", "/a/b 5 6", "/a/c (nothing) 1"));
}

TEST(ChangesTest, NamedElementsMayChangePlaces)
{
    const std::string one = "<z><name>one</name><v>1</v></z>", two = "<z><name>two</name><v>2</v></z>";
    EXPECT_THAT(Changed("<a>" + one + two + "</a>", "<a>" + two + one + "</a>"), IsEmpty());
    EXPECT_THAT(
        Changed("<a>" + one + two + "</a>", "<a>" + two + "</a>"),
        ElementsAre("/a/z[1]/name one two", "/a/z[1]/v 1 2", "/a/z[2] (the element named two) (nothing)"));
}

TEST(TextTest, WhatWouldControlATerminalIsShownAsANumber)
{
    EXPECT_EQ(Printable("a\x1b[2J\xc2\x9b\n\xe2\x80\xae\xff\xc0\x80\xed\xa0\x80"),
              "a<U+001B>[2J<U+009B><U+000A><U+202E>\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
    EXPECT_EQ(Printable("a\n\tb\r", true), "a\n\tb<U+000D>");
    EXPECT_EQ(Printable("\xc3\xa9\xe4\xb8\xad\xf0\x9f\x98\x80"), "\xc3\xa9\xe4\xb8\xad\xf0\x9f\x98\x80");
}

} // namespace
} // namespace client
