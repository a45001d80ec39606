// Every request with every platform call throwing and every request for memory refused: a right answer, a
// fault or a closed connection, nothing wrong handed to the platform, and the next request works.

#include "Shortage.h"

#include <SoapRequest.h>

#include <analytics/Faults.h>

#include <fake-platform/FakePlatform.h>

#include "../source/Messages.h"
#include "../source/Wire.h"

#include <gtest/gtest.h>

#include <fnmatch.h>

#include <algorithm>
#include <map>
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
    "Name=\"Sensitivity\" Value=\"5\"/></tt:Parameters></tt:AnalyticsModule>"
    "</tt:AnalyticsEngineConfiguration><tt:RuleEngineConfiguration>"
    "<tt:Rule Name=\"Gate\" Type=\"com.varlo.rule.directionalmotion\"><tt:Parameters><tt:SimpleItem "
    "Name=\"EnableAlarm\" Value=\"1\"/></tt:Parameters></tt:Rule></tt:RuleEngineConfiguration></tt:R>";

// The call that an operation is there for, as far as what it hands over shows that it was well understood.
const std::map<std::string, std::string> kCalls = {
    {"CreateProfile", "CreateProfile Day & Night of the gate"},
    {"DeleteProfile", "DeleteProfile 1"},
    {"ExecuteProfile", "ExecuteProfile 1"},
    {"StopProfile", "StopProfile 1"},
    {"AlgorithmControl", "AlgorithmControl 1"},
    {"GetActiveProfile", "GetActiveProfile"},
    {"GetProfileList", "GetProfileList"},
    {"GetBehaviorAvailability", "GetActiveRules 1"},
    {"GetBehaviorAvailability2", "GetManifest urn:varlo-com:AlgorithmId:DirectionalMotion:1"},
    {"GetDefaultConfiguration", "GetVarloDefaultConfiguration com.varlo.rule.directionalmotion"},
    {"GetProfileBehavior", "GetConfig 1"},
    {"SetProfileBehavior",
     "SetRuleConfig 1 com.varlo.rule.directionalmotion *The gate at the northern side* 1"},
    {"DeleteProfileBehavior", "DeleteRule 1 com.varlo.rule.directionalmotion"},
    {"GetDefaultScene", "GetVarloDefaultConfiguration com.varlo.engine.sceneanalyzer"},
    {"GetProfileScene", "GetEngineConfig 1 com.varlo.engine.sceneanalyzer"},
    {"SetProfileScene", "SetEngineConfig 1 com.varlo.engine.sceneanalyzer *Name=\"Sensitivity\" Value=\"7\"* "
                        "Gate by night "},
};

// `*` in a pattern stands for any text.
bool Matches(const std::string& call, const std::string& pattern)
{
    return fnmatch(pattern.c_str(), call.c_str(), FNM_NOESCAPE) == 0;
}
} // namespace

class RequestFaultsTest : public testing::Test, public testing::WithParamInterface<wire::Message>
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
    // One request, of which the nth allocation is refused; what came back.
    std::string Serve(int nth = 0, bool lasting = false)
    {
        m_platform.calls.clear();
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
    // One request that nothing hinders: the platform was called as the operation has to.
    std::string ServeWell()
    {
        const std::string answer = Serve();
        const auto isRight = [](const std::string& call)
        { return Matches(call, kCalls.at(GetParam().operation)); };
        EXPECT_TRUE(std::ranges::any_of(m_platform.calls, isRight))
            << testing::PrintToString(m_platform.calls);
        EXPECT_THAT(answer, StartsWith(kOk));
        return answer;
    }
    // What has been called is how `right` begins.
    void ExpectCallsAreRight(const std::vector<std::string>& right) const
    {
        ASSERT_LE(m_platform.calls.size(), right.size());
        for (std::size_t i = 0; i < m_platform.calls.size(); ++i)
            EXPECT_EQ(m_platform.calls[i], right[i]);
    }

    fake::Platform m_platform;
    analytics::kestrile::SoapIO::SoapIOImpl m_transport;
    const std::string m_request = wire::Http(wire::Envelope(GetParam().element));
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
            [](int& id, const std::string&)
            {
                id = 1;
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
    ON_CALL(p, SetRuleConfig).WillByDefault(Return(true));
    ON_CALL(p, SetEngineConfig(_, _, _)).WillByDefault(Return(true));
    ON_CALL(p, SetEngineConfig(_, _, _, _, _)).WillByDefault(Return(true));
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
    const std::string right = ServeWell();
    const std::vector<std::string> calls = m_platform.calls;
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
            ExpectCallsAreRight(calls);
            if (reached)
            {
                EXPECT_THAT(answer, HasSubstr(thrown.code)) << nth;
                EXPECT_THAT(answer, HasSubstr(thrown.text)) << nth;
            }
            else
                EXPECT_EQ(answer, right);
        }
        EXPECT_EQ(ServeWell(), right);
        EXPECT_GT(nth, 2);
    }
}

// ---- Memory ----

TEST_P(RequestFaultsTest, NoMemoryIsAFaultOrAClosedConnection)
{
    // Twice: what is kept from one request to the next is there then.
    Serve();
    const std::string right = ServeWell();
    const std::vector<std::string> calls = m_platform.calls;
    m_platform.onCall = shortage::Pause;
    m_platform.onReturn = shortage::Resume;
    for (const bool lasting : {false, true})
    {
        int nth = 1;
        for (m_refused = true; m_refused; ++nth)
        {
            SCOPED_TRACE("allocation " + std::to_string(nth));
            const std::string answer = Serve(nth, lasting);
            ExpectCallsAreRight(calls);
            // Whole, broken off, or a fault.
            if (!right.starts_with(answer))
            {
                EXPECT_THAT(answer, StartsWith("HTTP/1.1 500 "));
                EXPECT_THAT(answer, HasSubstr("fault"));
            }
            ASSERT_FALSE(HasFailure());
        }
        EXPECT_GT(nth, 5);
        EXPECT_EQ(ServeWell(), right);
    }
}

TEST(RequestFaultsTableTest, EachOperationHasAMessageAndACall)
{
    std::vector<std::string> operations;
    for (const wire::Message& message : wire::Messages())
        operations.push_back(message.operation);
    std::ranges::sort(operations);
    std::vector<std::string> known;
    for (const auto& [operation, call] : kCalls)
        known.push_back(operation);
    EXPECT_EQ(operations, known);
}

INSTANTIATE_TEST_SUITE_P(Requests, RequestFaultsTest, testing::ValuesIn(wire::Messages()),
                         [](const auto& row) { return row.param.operation; });
