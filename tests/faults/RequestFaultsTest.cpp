// Every request with every platform call throwing and every request for memory refused: a right answer, a
// fault or a closed connection, nothing wrong handed to the platform, and the next request works.

#include "Shortage.h"

#include <SoapRequest.h>

#include <analytics/Faults.h>

#include <fake-platform/FakePlatform.h>

#include "../source/Wire.h"

#include <gtest/gtest.h>

#include <stdexcept>

using testing::_;
using testing::HasSubstr;
using testing::Return;
using testing::StartsWith;

namespace
{
constexpr char kOk[] = "HTTP/1.1 200 OK\r\n";
constexpr char kRule[] = "com.varlo.rule.directionalmotion";
constexpr char kUrn[] = "urn:varlo-com:AlgorithmId:DirectionalMotion:1";
constexpr char kEngine[] = "com.varlo.engine.directionalmotion";
constexpr char kScene[] = "com.varlo.engine.sceneanalyzer";
constexpr char kConfig[] =
    "<tt:R xmlns:tt=\"http://www.onvif.org/ver10/schema\" "
    "xmlns:va=\"urn:x\"><tt:AnalyticsEngineConfiguration>"
    "<tt:AnalyticsModule Type=\"com.varlo.engine.directionalmotion\"><tt:Parameters><tt:SimpleItem "
    "Name=\"Sensitivity\" Value=\"5\"/></tt:Parameters></tt:AnalyticsModule>"
    "<tt:AnalyticsModule Type=\"com.varlo.engine.sceneanalyzer\"><tt:Parameters><tt:SimpleItem "
    "Name=\"CalibrationMode\" Value=\"0\"/></tt:Parameters></tt:AnalyticsModule>"
    "</tt:AnalyticsEngineConfiguration><tt:RuleEngineConfiguration>"
    "<tt:Rule Name=\"Gate\" Type=\"com.varlo.rule.directionalmotion\"><tt:Parameters><tt:SimpleItem "
    "Name=\"EnableAlarm\" Value=\"1\"/></tt:Parameters></tt:Rule></tt:RuleEngineConfiguration></tt:R>";

struct Operation
{
    const char* name;
    const char* body;
};
void PrintTo(const Operation& operation, std::ostream* stream) { *stream << operation.name; }

constexpr Operation kOperations[] = {
    {"CreateProfile", "<v:CreateProfile><name>Day &amp; Night of the gate</name></v:CreateProfile>"},
    {"DeleteProfile", "<v:DeleteProfile><profileId>4</profileId></v:DeleteProfile>"},
    {"ExecuteProfile", "<v:ExecuteProfile><profileId>4</profileId></v:ExecuteProfile>"},
    {"StopProfile", "<v:StopProfile><profileId>4</profileId></v:StopProfile>"},
    {"AlgorithmControl", "<v:AlgorithmControl><command>1</command></v:AlgorithmControl>"},
    {"GetActiveProfile", "<v:GetActiveProfile/>"},
    {"GetProfileList", "<v:GetProfileList/>"},
    {"GetBehaviorAvailability",
     "<v:GetBehaviorAvailability><profileId>4</profileId></v:GetBehaviorAvailability>"},
    {"GetBehaviorAvailability2",
     "<v:GetBehaviorAvailability2><behaviors><behavior>urn:varlo-com:AlgorithmId:DirectionalMotion:1"
     "</behavior></behaviors></v:GetBehaviorAvailability2>"},
    {"GetDefaultConfiguration", "<v:GetDefaultConfiguration><behaviorId>urn:varlo-com:AlgorithmId:"
                                "DirectionalMotion:1</behaviorId></v:GetDefaultConfiguration>"},
    {"GetProfileBehavior", "<v:GetProfileBehavior><profileId>4</profileId><behaviorId>urn:varlo-com:"
                           "AlgorithmId:DirectionalMotion:1</behaviorId></v:GetProfileBehavior>"},
    {"SetProfileBehavior",
     "<v:SetProfileBehavior><profileId>4</profileId><behaviorId>urn:varlo-com:AlgorithmId:"
     "DirectionalMotion:1</behaviorId><config>&lt;behavior id=\"urn:varlo-com:AlgorithmId:"
     "DirectionalMotion:1\" active=\"1\">&lt;rois>&lt;roi>&lt;name>The gate at the northern side&lt;/name>"
     "&lt;/roi>&lt;/rois>&lt;/behavior></config></v:SetProfileBehavior>"},
    {"DeleteProfileBehavior", "<v:DeleteProfileBehavior><profileId>4</profileId><behaviorId>urn:varlo-com:"
                              "AlgorithmId:DirectionalMotion:1</behaviorId></v:DeleteProfileBehavior>"},
    {"GetDefaultScene", "<v:GetDefaultScene/>"},
    {"GetProfileScene", "<v:GetProfileScene><profileId>4</profileId></v:GetProfileScene>"},
    {"SetProfileScene",
     "<v:SetProfileScene><profileId>4</profileId><config>&lt;analyticProfile name=\"a\">&lt;scene/>"
     "&lt;/analyticProfile></config></v:SetProfileScene>"},
};
} // namespace

class RequestFaultsTest : public testing::Test, public testing::WithParamInterface<Operation>
{
  protected:
    RequestFaultsTest();
    ~RequestFaultsTest() override { analyticsapi::SoapRequest::Shutdown(); }

    void Install(const std::string& id, const std::string& alias, const std::string& type,
                 const std::string& behavior, std::vector<std::string> dependencies = {})
    {
        analytics::ManifestFields fields;
        fields.id = id;
        fields.alias = alias;
        fields.name = id;
        fields.type = type;
        fields.resourceRequirement = 10;
        fields.dependencies = std::move(dependencies);
        m_platform.plugins.push_back({fields, kConfig, behavior});
    }
    // What a change hands over.
    void Note(const std::string& change) { m_changes.push_back(change); }

    // One request, of which the nth allocation is refused; what came back.
    std::string Serve(int nth = 0, bool lasting = false)
    {
        m_changes.clear();
        fake::SocketRecord record;
        record.sent.reserve(65536);
        record.timeouts.reserve(100);
        record.bufferSizes.reserve(10);
        auto* const socket = new fake::ScriptedSocket(record, m_request);
        shortage::Begin(nth, lasting);
        m_transport.AcceptSocket(socket);
        m_refused = shortage::End();
        if (record.deleted == 0) // a connection for which there was no context at all
            delete socket;
        EXPECT_EQ(record.deleted, 1);
        return record.sent;
    }
    void ExpectChangesAreRight(const std::vector<std::string>& right) const
    {
        ASSERT_LE(m_changes.size(), right.size());
        for (std::size_t i = 0; i < m_changes.size(); ++i)
            EXPECT_EQ(m_changes[i], right[i]);
    }

    fake::Platform m_platform;
    analytics::kestrile::SoapIO::SoapIOImpl m_transport;
    const std::string m_request = wire::Http(wire::Envelope(GetParam().body));
    std::vector<std::string> m_changes;
    bool m_refused = false; // whether the last request was refused memory
};

RequestFaultsTest::RequestFaultsTest()
{
    Install(kRule, kUrn, "rule", "<behavior id=\"x\"/>", {"com.varlo.source.camera", kEngine});
    Install(kEngine, "urn:engine", "engine", "");
    Install(kScene, "urn:scene", "engine", "<analyticProfile><scene/></analyticProfile>");
    auto& p = m_platform.profiles;
    ON_CALL(p, CreateProfile)
        .WillByDefault(
            [this](int& id, const std::string& name)
            {
                Note(name);
                id = 4;
                return true;
            });
    ON_CALL(p, DeleteProfile).WillByDefault(Return(true));
    ON_CALL(p, ExecuteProfile).WillByDefault(Return(true));
    ON_CALL(p, StopProfile).WillByDefault(Return(true));
    ON_CALL(p, AlgorithmControl).WillByDefault(Return(true));
    ON_CALL(p, GetActiveProfile).WillByDefault(Return(true));
    ON_CALL(p, GetProfileList)
        .WillByDefault(
            [](std::vector<analytics::ProfileSummary>& list)
            {
                list = {{1, "a name that needs memory of its own", "", false}, {2, "b", "p", true}};
                return true;
            });
    ON_CALL(p, GetProfileName).WillByDefault(Return("name"));
    ON_CALL(p, GetConfig).WillByDefault(Return(kConfig));
    ON_CALL(p, GetActiveRules)
        .WillByDefault(
            [](int, std::vector<std::string>& rules)
            {
                rules = {kRule};
                return true;
            });
    ON_CALL(p, GetEngineConfig)
        .WillByDefault(
            [](int, const std::string&, std::string& config)
            {
                config = kConfig;
                return true;
            });
    ON_CALL(p, SetRuleConfig)
        .WillByDefault(
            [this](int, const std::string& id, const std::string& config, bool active)
            {
                Note(id + (active ? "+" : "-") + config);
                return true;
            });
    ON_CALL(p, SetEngineConfig(_, _, _))
        .WillByDefault(
            [this](int, const std::string& id, const std::string& config)
            {
                Note(id + config);
                return true;
            });
    ON_CALL(p, SetEngineConfig(_, _, _, _, _))
        .WillByDefault(
            [this](int, const std::string& id, const std::string& config, const std::string& name,
                   const std::string& preset)
            {
                Note(id + config + "|" + name + "|" + preset);
                return true;
            });
    ON_CALL(p, DeleteRule).WillByDefault(Return(true));
    analyticsapi::SoapRequest::GetProfileManager();
}

// ---- Platform calls ----

namespace
{
struct Thrown
{
    void (*raise)();
    const char* code;
    const char* text;
};
const Thrown kThrown[] = {
    {[] { throw analytics::ClientFault("wrong"); }, "SOAP-ENV:Client", "<faultstring>wrong</faultstring>"},
    {[] { throw analytics::AnalyticsFault("broken"); }, "SOAP-ENV:Server",
     "<faultstring>broken</faultstring>"},
    {[] { throw std::runtime_error("other"); }, "SOAP-ENV:Server", "An exception occurred"},
    {[] { throw 1; }, "SOAP-ENV:Server", "Unknown exception"},
};
} // namespace

TEST_P(RequestFaultsTest, WhateverAPlatformCallThrowsIsAFault)
{
    const std::string right = Serve();
    const std::vector<std::string> changes = m_changes;
    ASSERT_THAT(right, StartsWith(kOk));
    for (const Thrown& thrown : kThrown)
    {
        bool reached = true;
        int nth = 1;
        for (; reached; ++nth)
        {
            int left = nth;
            m_platform.onCall = [&]
            {
                if (--left == 0)
                    thrown.raise();
            };
            const std::string answer = Serve();
            m_platform.onCall = [] {};
            reached = left <= 0;
            ExpectChangesAreRight(changes);
            if (reached)
            {
                EXPECT_THAT(answer, HasSubstr(thrown.code)) << nth;
                EXPECT_THAT(answer, HasSubstr(thrown.text)) << nth;
            }
            else
                EXPECT_EQ(answer, right);
        }
        EXPECT_EQ(Serve(), right);
        EXPECT_TRUE(nth > 2 || std::string(GetParam().name) == "GetDefaultScene");
    }
}

// ---- Memory ----

TEST_P(RequestFaultsTest, NoMemoryIsAFaultOrAClosedConnection)
{
    // Twice: what is kept from one request to the next is there then.
    Serve();
    const std::string right = Serve();
    const std::vector<std::string> changes = m_changes;
    m_platform.onCall = shortage::Pause;
    m_platform.onReturn = shortage::Resume;
    for (const bool lasting : {false, true})
    {
        int nth = 1;
        for (m_refused = true; m_refused; ++nth)
        {
            SCOPED_TRACE("allocation " + std::to_string(nth));
            const std::string answer = Serve(nth, lasting);
            ExpectChangesAreRight(changes);
            // Whole, broken off, or a fault.
            if (!right.starts_with(answer))
            {
                EXPECT_THAT(answer, StartsWith("HTTP/1.1 500 "));
                EXPECT_THAT(answer, HasSubstr("fault"));
            }
            ASSERT_FALSE(HasFailure());
        }
        EXPECT_GT(nth, 5);
        EXPECT_EQ(Serve(), right);
    }
}

INSTANTIATE_TEST_SUITE_P(Requests, RequestFaultsTest, testing::ValuesIn(kOperations),
                         [](const auto& row) { return std::string(row.param.name); });
