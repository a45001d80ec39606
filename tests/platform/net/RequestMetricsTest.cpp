// Which operation a request is counted as, and how its answer is judged.

#include "net/RequestMetrics.h"

#include "metrics/Metrics.h"

#include <gmock/gmock.h>

#include <string>

namespace tarno::osa::requestmetrics
{
namespace
{

using analytics::platform::MetricsText;
using testing::HasSubstr;

std::string Request(const std::string& envelope) { return "POST / HTTP/1.1\r\nHost: <a>\r\n\r\n" + envelope; }

struct Case
{
    const char* envelope;
    const char* operation;
};

class OperationOfTest : public testing::TestWithParam<Case>
{
};

TEST_P(OperationOfTest, IsTheFirstElementInTheBody)
{
    const std::string name = GetParam().operation;
    EXPECT_EQ(OperationOf(Request(GetParam().envelope)),
              OperationOf(Request("<Envelope><Body><" + name + "/></Body></Envelope>")));
    EXPECT_EQ(OperationOf(Request(GetParam().envelope)) == OperationOf(""), name == "other");
}

INSTANTIATE_TEST_SUITE_P(
    Messages, OperationOfTest,
    testing::Values(
        Case{"<?xml "
             "version='1.0'?><s:Envelope><s:Body><v:StopProfile><id>1</id></v:StopProfile></s:Body></"
             "s:Envelope>",
             "StopProfile"},
        Case{"<Envelope><Body><GetProfileList/></Body></Envelope>", "GetProfileList"},
        Case{"<e:Envelope a='>'><e:Header><StopProfile/><Body><CreateProfile/></Body></e:Header>\n"
             "<e:Body b=\"/>\"><!-- <StopProfile> --><?x <StopProfile> "
             "?>\n<x:GetActiveProfile\n/></e:Body></e:Envelope>",
             "GetActiveProfile"},
        Case{"<Envelope><Header/><Body><![CDATA[<StopProfile>]]><GetProfileScene/></Body></Envelope>",
             "GetProfileScene"},
        Case{"<Envelope><Body><other/></Body></Envelope>", "other"}, Case{"<Envelope><Body><Stop>", "other"},
        Case{"<Envelope><Body>", "other"}, Case{"<", "other"}, Case{"", "other"},
        Case{"<Envelope><StopProfile/></Envelope>", "other"}, Case{"<!-- <Envelope>", "other"}));

TEST(RequestMetrics, AreShownByOperationAndOutcome)
{
    Count(OperationOf(Request("<Envelope><Body><StopProfile/></Body></Envelope>")), Outcome::ClientFault,
          0.3);
    EXPECT_THAT(MetricsText(),
                HasSubstr("varlo_requests_total{operation=\"StopProfile\",outcome=\"client_fault\"} 1\n"));
    EXPECT_THAT(MetricsText(), HasSubstr("varlo_request_seconds_count{operation=\"StopProfile\"} 1\n"));
    EXPECT_THAT(MetricsText(),
                HasSubstr("varlo_requests_total{operation=\"other\",outcome=\"dropped\"} 0\n"));
}

TEST(OutcomeOf, IsSaidByStatusAndFault)
{
    EXPECT_EQ(OutcomeOf("HTTP/1.1 200 OK\r\n\r\n<x/>"), Outcome::Ok);
    EXPECT_EQ(OutcomeOf("HTTP/1.1 500 Internal\r\n\r\n<faultcode>SOAP-ENV:Client</faultcode>"),
              Outcome::ClientFault);
    EXPECT_EQ(OutcomeOf("HTTP/1.1 400 Bad\r\n\r\n<SOAP-ENV:Value>SOAP-ENV:Sender</SOAP-ENV:Value>"),
              Outcome::ClientFault);
    EXPECT_EQ(OutcomeOf("HTTP/1.1 500 Internal\r\n\r\n<faultcode>SOAP-ENV:Server</faultcode>"),
              Outcome::ServerFault);
    EXPECT_EQ(OutcomeOf(""), Outcome::Dropped);
}

} // namespace
} // namespace tarno::osa::requestmetrics
