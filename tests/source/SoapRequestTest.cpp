// The frame of every request: exceptions become faults here and nowhere else.

#include <SoapRequest.h>

#include <fake-platform/FakePlatform.h>

#include <analytics/Faults.h>

#include <stdsoap2.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace
{

using analyticsapi::SoapRequest;

class Request : public SoapRequest
{
  public:
    Request(soap* context, std::function<int()> body)
        : SoapRequest("Request", context), m_body(std::move(body))
    {
    }

  protected:
    int DoExecute() override { return m_body(); }

  private:
    std::function<int()> m_body;
};

struct Row
{
    const char* name;
    std::function<int()> body;
    const char* code;
    const char* text;
    const char* detail; // null for none
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

class FaultTest : public testing::TestWithParam<Row>
{
};

TEST_P(FaultTest, AnExceptionBecomesItsFault)
{
    soap* const context = soap_new1(SOAP_C_UTFSTRING);
    context->version = 1;
    EXPECT_EQ(Request(context, GetParam().body).Execute(), SOAP_FAULT);
    soap_set_fault(context);
    EXPECT_STREQ(*soap_faultcode(context), GetParam().code);
    EXPECT_STREQ(*soap_faultstring(context), GetParam().text);
    EXPECT_STREQ(*soap_faultdetail(context), GetParam().detail);

    EXPECT_EQ(Request(context, [] { return 0; }).Execute(), 0) << "the next request isn't affected";
    soap_destroy(context);
    soap_end(context);
    soap_free(context);
}

INSTANTIATE_TEST_SUITE_P(
    All, FaultTest,
    testing::Values(Row{"Client", []() -> int { throw analytics::ClientFault("Profile 7 does not exist"); },
                        "SOAP-ENV:Client", "Profile 7 does not exist", nullptr},
                    Row{"Camera", []() -> int { throw analytics::AnalyticsFault("The disk is full"); },
                        "SOAP-ENV:Server", "The disk is full", nullptr},
                    Row{"Standard", []() -> int { throw std::out_of_range("index 5"); }, "SOAP-ENV:Server",
                        "An exception occurred", "index 5"},
                    Row{"Other", []() -> int { throw 5; }, "SOAP-ENV:Server", "An exception occurred",
                        "Unknown exception"}),
    [](const auto& row) { return row.param.name; });

TEST(SoapRequestTest, StatusPassesThroughAndNoFaultIsAdded)
{
    soap* const context = soap_new1(SOAP_C_UTFSTRING);
    for (const int status : {0, -1, 12, SOAP_NO_METHOD})
        EXPECT_EQ(Request(context, [status] { return status; }).Execute(), status);
    EXPECT_EQ(context->error, SOAP_OK);
    EXPECT_EQ(context->fault, nullptr);
    soap_destroy(context);
    soap_end(context);
    soap_free(context);
}

TEST(SoapRequestTest, OneManagerForTheProcessUntilShutdown)
{
    fake::Platform platform;
    analytics::ProfileManager* const manager = SoapRequest::GetProfileManager();
    EXPECT_EQ(SoapRequest::GetProfileManager(), manager);
    EXPECT_EQ(platform.managersMade, 1);
    EXPECT_TRUE(SoapRequest::Shutdown());
    EXPECT_TRUE(SoapRequest::Shutdown());
    EXPECT_EQ(platform.managersDeleted, 1);
}

TEST(SoapRequestTest, ManagerThatCannotBeMadeLeavesNone)
{
    fake::Platform platform;
    platform.onManagerMade = [] { throw analytics::AnalyticsFault("no store"); };
    EXPECT_THROW(SoapRequest::GetProfileManager(), analytics::AnalyticsFault);
    EXPECT_TRUE(SoapRequest::Shutdown());
    EXPECT_EQ(platform.managersDeleted, 0);
    platform.onManagerMade = [] {};
    EXPECT_NE(SoapRequest::GetProfileManager(), nullptr) << "a later request tries again";
    SoapRequest::Shutdown();
}

} // namespace
