// Which behaviors can still be selected: the computation on a scripted platform, and its two handlers.

#include "../source/Wire.h"

#include <SoapRequest.h>

#include <AvailabilityRequests.h>

#include <fake-platform/FakePlatform.h>

#include <analytics/Faults.h>

#include <gtest/gtest.h>

namespace
{

using analyticsapi::Active;
using analyticsapi::Availability;
using analyticsapi::AvailabilityList;
using analyticsapi::Available;
using analyticsapi::Unavailable;
using testing::_;
using testing::DoAll;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Return;
using testing::SetArgReferee;
using testing::StartsWith;
using Strings = std::vector<std::string>;
using Availabilities = std::vector<Availability>;

constexpr char kCount[] = "//maxSelectableRules/numberOfCount";
constexpr char kCountOnlyConfigurable[] = "//maxSelectableRules/countOnlyConfigurable";
constexpr char kHidden[] = "//nonUserConfigurableRules/id";

fake::Plugin Plugin(const std::string& id, std::uint32_t cost, Strings dependencies, bool fixed,
                    const std::string& type = "rule")
{
    analytics::ManifestFields fields;
    fields.id = id;
    fields.alias = "urn:" + id;
    fields.name = "The " + id;
    fields.fixedCameraPosition = fixed;
    fields.resourceRequirement = cost;
    fields.dependencies = std::move(dependencies);
    fields.type = type;
    return {fields, "", ""};
}

struct Result
{
    Availabilities visible;
    Availabilities hidden;
};

class AvailabilityTest : public testing::Test
{
  protected:
    AvailabilityTest()
    {
        m_platform.settings[kHidden] = {"H"};
        m_platform.plugins = {Plugin("R1", 30, {"E1"}, true),
                              Plugin("R2", 30, {"E1"}, true),
                              Plugin("R3", 20, {"E2"}, true),
                              Plugin("R4", 10, {}, false),
                              Plugin("H", 5, {}, true),
                              Plugin("E1", 40, {}, false, "engine"),
                              Plugin("E2", 30, {}, false, "engine")};
        ON_CALL(m_platform.profiles, GetMDActiveState)
            .WillByDefault(testing::Invoke([this] { return m_md; }));
    }
    ~AvailabilityTest() override { analyticsapi::SoapRequest::Shutdown(); }

    static Result ResultOf(analyticsapi::BehaviorAvailabilityRequest& request)
    {
        EXPECT_EQ(request.Execute(), 0);
        Result result;
        AvailabilityList hidden;
        for (const auto& [manifest, availability] : request.BehaviorAvailabilities(hidden))
            result.visible.push_back(availability);
        for (const auto& [manifest, availability] : hidden)
            result.hidden.push_back(availability);
        return result;
    }

    Result Beside(const Strings& activeRules)
    {
        analyticsapi::GetBehaviorAvailability2Request request(activeRules, nullptr);
        return ResultOf(request);
    }

    fake::Platform m_platform;
    bool m_md = false;
};

TEST_F(AvailabilityTest, WorkedExamples)
{
    struct Row
    {
        Strings active;
        bool md;
        const char* countOnlyConfigurable;
        Availabilities visible;
        Availability hidden;
    };
    const Row rows[] = {
        {{}, false, "0", {Available, Available, Available, Available}, Available},
        {{"R1"}, false, "0", {Active, Available, Unavailable, Unavailable}, Available},
        {{"R1", "R2"}, false, "0", {Active, Active, Unavailable, Unavailable}, Unavailable},
        {{"R4"}, false, "0", {Unavailable, Unavailable, Unavailable, Active}, Available},
        {{"R1", "R4"}, false, "0", {Unavailable, Unavailable, Unavailable, Active}, Unavailable},
        {{"R1"}, true, "0", {Active, Unavailable, Unavailable, Unavailable}, Unavailable},
        {{"R1"}, true, "1", {Active, Available, Unavailable, Unavailable}, Available},
        {{"H"}, false, "0", {Available, Available, Available, Unavailable}, Active},
        {{"R1", "R1"}, false, "0", {Active, Unavailable, Unavailable, Unavailable}, Unavailable},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(row.active) + (row.md ? " MD" : "") + row.countOnlyConfigurable);
        m_md = row.md;
        m_platform.settings[kCountOnlyConfigurable] = {row.countOnlyConfigurable};
        const Result result = Beside(row.active);
        EXPECT_EQ(result.visible, row.visible);
        EXPECT_THAT(result.hidden, ElementsAre(row.hidden));
    }
}

TEST_F(AvailabilityTest, ExactlyWhatIsLeftIsEnough)
{
    m_platform.maxResource = 70 + 30;
    EXPECT_EQ(Beside({"R1"}).visible[1], Available);
    m_platform.maxResource = 70 + 29;
    EXPECT_EQ(Beside({"R1"}).visible[1], Unavailable);
}

TEST_F(AvailabilityTest, AllSelectionsTakenLeavesNothingHoweverCheap)
{
    m_platform.plugins.push_back(Plugin("R5", 0, {}, true));
    m_platform.settings[kCount] = {"1"};
    EXPECT_THAT(Beside({"R1"}).visible,
                ElementsAre(Active, Unavailable, Unavailable, Unavailable, Unavailable));
}

TEST_F(AvailabilityTest, ABudgetThatIsExceededLeavesZeroAndDoesNotWrap)
{
    m_platform.maxResource = 60; // R1 and its engine use 70
    m_platform.plugins.push_back(Plugin("Free", 0, {}, true));
    m_platform.plugins.push_back(Plugin("OnRunningEngine", 0, {"E1"}, true));
    m_platform.plugins.push_back(Plugin("OnOtherEngine", 0, {"E2"}, true));
    EXPECT_THAT(Beside({"R1"}).visible, ElementsAre(Active, Unavailable, Unavailable, Unavailable, Available,
                                                    Available, Unavailable));
}

TEST_F(AvailabilityTest, ACountOfZeroLeavesNothing)
{
    m_platform.settings[kCount] = {"0"};
    EXPECT_THAT(Beside({}).visible, ElementsAre(Unavailable, Unavailable, Unavailable, Unavailable));
    m_platform.settings[kCountOnlyConfigurable] = {"1"};
    m_md = true;
    EXPECT_CALL(m_platform.profiles, GetMDActiveState).Times(0);
    EXPECT_THAT(Beside({}).visible, ElementsAre(Unavailable, Unavailable, Unavailable, Unavailable));
}

TEST_F(AvailabilityTest, ACountBelowZeroWrapsAndLimitsNothing)
{
    m_platform.maxResource = 1000;
    for (const auto& [count, md] : {std::pair("0", true), std::pair("-1", false), std::pair("-5", true)})
    {
        m_platform.settings[kCount] = {count};
        m_md = md;
        EXPECT_THAT(Beside({"R1", "R2"}).visible, ElementsAre(Active, Active, Available, Unavailable))
            << count;
    }
}

TEST_F(AvailabilityTest, TheCountIsTwoWithoutASetting)
{
    m_platform.maxResource = 1000;
    EXPECT_EQ(Beside({"R1"}).visible[2], Available);
    EXPECT_EQ(Beside({"R1", "R2"}).visible[2], Unavailable);
}

TEST_F(AvailabilityTest, NegativeProfileIsAProfileWithNothingActive)
{
    EXPECT_CALL(m_platform.profiles, GetActiveRules).Times(0);
    analyticsapi::GetBehaviorAvailabilityRequest request(-1, nullptr);
    EXPECT_EQ(ResultOf(request).visible, Beside({}).visible);
}

TEST_F(AvailabilityTest, ActiveRulesOfAProfileCountWhateverTheManagerAnswers)
{
    EXPECT_CALL(m_platform.profiles, GetActiveRules(0, _))
        .WillOnce(DoAll(SetArgReferee<1>(Strings{"R1"}), Return(false)))
        .WillOnce(Return(false));
    analyticsapi::GetBehaviorAvailabilityRequest request(0, nullptr);
    EXPECT_THAT(ResultOf(request).visible, ElementsAre(Active, Available, Unavailable, Unavailable));
    analyticsapi::GetBehaviorAvailabilityRequest none(0, nullptr);
    EXPECT_THAT(ResultOf(none).visible, ElementsAre(Available, Available, Available, Available));
}

TEST_F(AvailabilityTest, AliasesCountLikeIdentifiers)
{
    EXPECT_EQ(Beside({"urn:R1"}).visible, Beside({"R1"}).visible);
    EXPECT_EQ(Beside({"urn:R1", "R2"}).visible, Beside({"R1", "R2"}).visible);
    m_platform.plugins[1].fields.dependencies = {"urn:E1"};
    EXPECT_THAT(Beside({"R1"}).visible, ElementsAre(Active, Available, Unavailable, Unavailable));
    EXPECT_THAT(Beside({"R1", "R2"}).visible, ElementsAre(Active, Active, Unavailable, Unavailable));
    EXPECT_EQ(Beside({"r1"}).visible[0], Available) << "with case";
}

TEST_F(AvailabilityTest, HiddenActiveRuleCostsButTakesNoSelection)
{
    m_platform.settings[kCount] = {"1"};
    EXPECT_EQ(Beside({"H"}).visible[0], Available);
    m_platform.plugins[4].fields.dependencies = {"E2"};
    m_platform.maxResource = 100; // H and E2 use 35, R1 and E1 want 70
    EXPECT_EQ(Beside({"H"}).visible[0], Unavailable);
    EXPECT_EQ(Beside({"H"}).visible[2], Available) << "its engine runs already";
}

TEST_F(AvailabilityTest, HiddenRuleThatMovesTheCameraMovesItForAll)
{
    m_platform.plugins[4].fields.fixedCameraPosition = false;
    const Result result = Beside({"H"});
    EXPECT_THAT(result.visible, ElementsAre(Unavailable, Unavailable, Unavailable, Available));
    EXPECT_THAT(result.hidden, ElementsAre(Active)) << "the hidden list isn't filtered";
}

TEST_F(AvailabilityTest, OnlyTheIdentifierHidesARule)
{
    m_platform.settings[kHidden] = {"urn:H"};
    const Result result = Beside({});
    EXPECT_EQ(result.visible.size(), 5U);
    EXPECT_TRUE(result.hidden.empty());
}

TEST_F(AvailabilityTest, UnknownActiveRuleTakesASelectionAndFilters)
{
    m_platform.maxResource = 1000;
    EXPECT_THAT(Beside({"unknown"}).visible, ElementsAre(Available, Available, Available, Unavailable));
    EXPECT_THAT(Beside({"unknown", ""}).visible,
                ElementsAre(Unavailable, Unavailable, Unavailable, Unavailable));
}

TEST_F(AvailabilityTest, DependencyListedTwiceIsChargedTwiceUnlessItRuns)
{
    m_platform.plugins[0].fields.dependencies = {"E1", "E1", "missing"};
    m_platform.maxResource = 110;
    EXPECT_EQ(Beside({}).visible[0], Available);
    m_platform.maxResource = 109;
    EXPECT_EQ(Beside({}).visible[0], Unavailable);
    m_platform.maxResource = 70;
    m_platform.plugins.push_back(Plugin("R5", 0, {}, true));
    EXPECT_EQ(Beside({"R1"}).visible.back(), Available) << "an active rule's engine is counted once";
}

TEST_F(AvailabilityTest, DependenciesOfDependenciesDoNotCount)
{
    m_platform.plugins[5].fields.dependencies = {"E2"};
    m_platform.maxResource = 70;
    EXPECT_EQ(Beside({}).visible[0], Available);
}

TEST_F(AvailabilityTest, ChangesShowAtTheNextRequest)
{
    EXPECT_EQ(Beside({}).visible.size(), 4U);
    m_platform.plugins.push_back(Plugin("R5", 101, {}, true));
    EXPECT_THAT(Beside({}).visible, ElementsAre(Available, Available, Available, Available, Unavailable));
    m_platform.maxResource = 101;
    EXPECT_EQ(Beside({}).visible.back(), Available);
}

// ---- The handlers ----

constexpr char kOpen[] = "<VideoAnalytics:GetBehaviorAvailabilityResponse>";
constexpr char kEmpty[] =
    "<VideoAnalytics:GetBehaviorAvailabilityResponse></VideoAnalytics:GetBehaviorAvailabilityResponse>";

std::string Wire(const char* tag, const char* id, int availability, bool fixed)
{
    return "<" + std::string(tag) + " xsi:type=\"VideoAnalytics:Behavior\"><type>urn:" + id +
           "</type><userName>The " + id + "</userName><availability>" + std::to_string(availability) +
           "</availability><supportAdvanceMode>false</supportAdvanceMode><fixedPosition>" +
           (fixed ? "true" : "false") + "</fixedPosition></" + tag + ">";
}

TEST_F(AvailabilityTest, FirstOperationReportsHiddenBehaviorsBehindTheVisible)
{
    EXPECT_CALL(m_platform.profiles, GetActiveRules(3, _))
        .WillOnce(DoAll(SetArgReferee<1>(Strings{"R1"}), Return(true)));
    const std::string answer =
        wire::Answer("<v:GetBehaviorAvailability><profileId>3</profileId></v:GetBehaviorAvailability>");
    EXPECT_THAT(answer,
                HasSubstr(kOpen + std::string("<behaviors xsi:type=\"VideoAnalytics:AvailabilityList\">") +
                          Wire("behavior", "R1", 2, true) + Wire("behavior", "R2", 1, true) +
                          Wire("behavior", "R3", 0, true) + Wire("behavior", "R4", 0, false) +
                          Wire("hiddenBehavior", "H", 1, true) + "</behaviors>"));
}

TEST_F(AvailabilityTest, SecondOperationNeverReportsHiddenBehaviors)
{
    const std::string answer =
        wire::Answer("<v:GetBehaviorAvailability2><activeBehaviors><behavior>urn:R1</behavior>"
                     "<behavior>H</behavior></activeBehaviors></v:GetBehaviorAvailability2>");
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_THAT(answer, HasSubstr(kOpen + std::string("<behaviors ")));
    EXPECT_THAT(answer, HasSubstr(Wire("behavior", "R1", 2, true)));
    EXPECT_THAT(answer, Not(HasSubstr("hiddenBehavior")));
}

TEST_F(AvailabilityTest, SecondOperationWithoutAListMeansNothingActive)
{
    for (const char* body : {"<v:GetBehaviorAvailability2/>",
                             "<v:GetBehaviorAvailability2><activeBehaviors/></v:GetBehaviorAvailability2>"})
        EXPECT_THAT(wire::Answer(body), HasSubstr(Wire("behavior", "R4", 1, false))) << body;
}

TEST_F(AvailabilityTest, WithoutAVisibleBehaviorThereIsNoList)
{
    m_platform.plugins = {Plugin("H", 5, {}, true)};
    EXPECT_THAT(
        wire::Answer("<v:GetBehaviorAvailability><profileId>-1</profileId></v:GetBehaviorAvailability>"),
        HasSubstr(kEmpty));
    EXPECT_THAT(wire::Answer("<v:GetBehaviorAvailability2/>"), HasSubstr(kEmpty));
}

TEST_F(AvailabilityTest, WhatThePlatformThrowsIsAFault)
{
    EXPECT_CALL(m_platform.profiles, GetActiveRules)
        .WillOnce(testing::Throw(analytics::AnalyticsFault("The store can't be read")));
    EXPECT_THAT(
        wire::Answer("<v:GetBehaviorAvailability/>"),
        HasSubstr(
            "<faultcode>SOAP-ENV:Server</faultcode><faultstring>The store can't be read</faultstring>"));
}

} // namespace
