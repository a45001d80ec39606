// The profile operations from the message to the platform and back, on a scripted platform.

#include "../source/Wire.h"

#include <SoapRequest.h>

#include <ProfileRequests.h>

#include <fake-platform/FakePlatform.h>

#include <analytics/Faults.h>

#include <soapH.h>

#include <gtest/gtest.h>

namespace
{

using analytics::ProfileSummary;
using testing::_;
using testing::DoAll;
using testing::HasSubstr;
using testing::Return;
using testing::SetArgReferee;
using testing::StartsWith;
using testing::Throw;
using wire::Answer;

class ProfileHandlersTest : public testing::Test
{
  protected:
    ~ProfileHandlersTest() override { analyticsapi::SoapRequest::Shutdown(); }

    fake::Platform m_platform;
};

constexpr char kOk[] = "HTTP/1.1 200 OK\r\n";

TEST_F(ProfileHandlersTest, CreateProfileGivesTheIdentifier)
{
    EXPECT_CALL(m_platform.profiles, CreateProfile(_, "Gate <1> & \xC3\xA9"))
        .WillOnce(DoAll(SetArgReferee<0>(12), Return(true)));
    const std::string answer =
        Answer("<v:CreateProfile><name>Gate &lt;1&gt; &amp; \xC3\xA9</name></v:CreateProfile>");
    EXPECT_THAT(answer, StartsWith(kOk));
    EXPECT_THAT(answer, HasSubstr("<VideoAnalytics:CreateProfileResponse><profileId>12</profileId>"
                                  "</VideoAnalytics:CreateProfileResponse>"));
}

TEST_F(ProfileHandlersTest, EmptyAndMissingNamesReachTheManager)
{
    EXPECT_CALL(m_platform.profiles, CreateProfile(_, "")).Times(2).WillRepeatedly(Return(true));
    EXPECT_THAT(Answer("<v:CreateProfile><name/></v:CreateProfile>"), StartsWith(kOk));
    EXPECT_THAT(Answer("<v:CreateProfile/>"), StartsWith(kOk));
}

// The operations with a number and no result: what the number is doesn't matter here.
TEST_F(ProfileHandlersTest, NumbersReachTheManagerUntested)
{
    testing::InSequence sequence;
    for (const int number : {-2147483647 - 1, -1, 0, 7, 2147483647})
    {
        EXPECT_CALL(m_platform.profiles, ExecuteProfile(number)).WillOnce(Return(true));
        EXPECT_CALL(m_platform.profiles, DeleteProfile(number)).WillOnce(Return(true));
        EXPECT_CALL(m_platform.profiles, StopProfile(number)).WillOnce(Return(true));
        EXPECT_CALL(m_platform.profiles, AlgorithmControl(number)).WillOnce(Return(true));
        const std::string text = std::to_string(number);
        EXPECT_THAT(
            Answer("<v:ExecuteProfile><id>" + text + "</id></v:ExecuteProfile>"),
            HasSubstr("<VideoAnalytics:ExecuteProfileResponse></VideoAnalytics:ExecuteProfileResponse>"));
        EXPECT_THAT(
            Answer("<v:DeleteProfile><profileId>" + text + "</profileId></v:DeleteProfile>"),
            HasSubstr("<VideoAnalytics:DeleteProfileResponse></VideoAnalytics:DeleteProfileResponse>"));
        EXPECT_THAT(Answer("<v:StopProfile><profileId>" + text + "</profileId></v:StopProfile>"),
                    HasSubstr("<VideoAnalytics:StopProfileResponse></VideoAnalytics:StopProfileResponse>"));
        EXPECT_THAT(
            Answer("<v:AlgorithmControl><command>" + text + "</command></v:AlgorithmControl>"),
            HasSubstr("<VideoAnalytics:AlgorithmControlResponse></VideoAnalytics:AlgorithmControlResponse>"));
    }
}

TEST_F(ProfileHandlersTest, EmptyStopProfileIsMinusOneAndOtherMissingNumbersAreZero)
{
    EXPECT_CALL(m_platform.profiles, StopProfile(-1)).WillOnce(Return(true));
    EXPECT_CALL(m_platform.profiles, DeleteProfile(0)).WillOnce(Return(true));
    EXPECT_THAT(Answer("<v:StopProfile/>"), StartsWith(kOk));
    EXPECT_THAT(Answer("<v:DeleteProfile/>"), StartsWith(kOk));
}

TEST_F(ProfileHandlersTest, GetActiveProfileGivesMinusOneWhenTheManagerWritesNothing)
{
    EXPECT_CALL(m_platform.profiles, GetActiveProfile(_))
        .WillOnce(Return(true))
        .WillOnce(DoAll(SetArgReferee<0>(3), Return(true)));
    EXPECT_THAT(Answer("<v:GetActiveProfile/>"), HasSubstr("<profileId>-1</profileId>"));
    EXPECT_THAT(Answer("<v:GetActiveProfile/>"), HasSubstr("<profileId>3</profileId>"));
}

TEST_F(ProfileHandlersTest, GetActiveProfileThatFailsSendsTheFaultAlone)
{
    EXPECT_CALL(m_platform.profiles, GetActiveProfile(_))
        .WillOnce(DoAll(SetArgReferee<0>(3), Throw(analytics::AnalyticsFault("no store"))));
    const std::string answer = Answer("<v:GetActiveProfile/>");
    EXPECT_THAT(answer, HasSubstr("<faultstring>no store</faultstring>"));
    EXPECT_THAT(answer, Not(HasSubstr("profileId")));
}

TEST_F(ProfileHandlersTest, ProfileListWritesOnlyWhatIsThere)
{
    const std::vector<ProfileSummary> profiles = {
        {1, "Day", "", false}, {2, "Night & fog", "", true}, {5, "", "Gate \"north\"", false}};
    EXPECT_CALL(m_platform.profiles, GetProfileList(_))
        .WillOnce(DoAll(SetArgReferee<0>(profiles), Return(true)));
    const std::string answer = Answer("<v:GetProfileList/>");
    EXPECT_THAT(answer, HasSubstr("<VideoAnalytics:GetProfileListResponse>"
                                  "<profileList xsi:type=\"VideoAnalytics:ProfileList\">"));
    const std::string start = "<profile xsi:type=\"VideoAnalytics:ProfileSummary\" id=";
    EXPECT_THAT(answer, HasSubstr(start + "\"1\">Day</profile>"));
    EXPECT_THAT(answer, HasSubstr(start + "\"2\" active=\"true\">Night &amp; fog</profile>"));
    EXPECT_THAT(answer, HasSubstr(start + "\"5\" preset=\"Gate &quot;north&quot;\"/>"));
    EXPECT_THAT(answer, Not(HasSubstr("false")));
}

TEST_F(ProfileHandlersTest, EmptyProfileListIsAnEmptyResponse)
{
    EXPECT_CALL(m_platform.profiles, GetProfileList(_)).WillOnce(Return(true));
    const std::string answer = Answer("<v:GetProfileList/>");
    EXPECT_THAT(answer, StartsWith(kOk));
    EXPECT_THAT(answer,
                HasSubstr("<VideoAnalytics:GetProfileListResponse></VideoAnalytics:GetProfileListResponse>"));
}

TEST_F(ProfileHandlersTest, ManagerThatSaysNoGivesNoAnswer)
{
    EXPECT_CALL(m_platform.profiles, CreateProfile).WillOnce(Return(false));
    EXPECT_CALL(m_platform.profiles, DeleteProfile).WillOnce(Return(false));
    EXPECT_CALL(m_platform.profiles, ExecuteProfile).WillOnce(Return(false));
    EXPECT_CALL(m_platform.profiles, StopProfile).WillOnce(Return(false));
    EXPECT_CALL(m_platform.profiles, GetActiveProfile).WillOnce(Return(false));
    EXPECT_CALL(m_platform.profiles, GetProfileList).WillOnce(Return(false));
    EXPECT_CALL(m_platform.profiles, AlgorithmControl).WillOnce(Return(false));
    for (const char* operation : {"CreateProfile", "DeleteProfile", "ExecuteProfile", "StopProfile",
                                  "GetActiveProfile", "GetProfileList", "AlgorithmControl"})
    {
        const fake::SocketRecord record =
            wire::Serve(wire::Http(wire::Envelope("<v:" + std::string(operation) + "/>")));
        EXPECT_EQ(record.sent, "") << operation;
        EXPECT_EQ(record.deleted, 1) << operation;
    }
}

TEST_F(ProfileHandlersTest, ClientFaultIsTheSendersInBothVersions)
{
    EXPECT_CALL(m_platform.profiles, DeleteProfile(9))
        .Times(2)
        .WillRepeatedly(Throw(analytics::ClientFault("Profile 9 does not exist")));
    const std::string body = "<v:DeleteProfile><profileId>9</profileId></v:DeleteProfile>";
    const std::string first = Answer(body);
    EXPECT_THAT(first, StartsWith("HTTP/1.1 500 Internal Server Error\r\n"));
    EXPECT_THAT(first, HasSubstr("<faultcode>SOAP-ENV:Client</faultcode>"
                                 "<faultstring>Profile 9 does not exist</faultstring>"));
    EXPECT_THAT(first, Not(HasSubstr("<detail")));
    const std::string second = Answer(body, wire::kEnvelope12);
    EXPECT_THAT(second, StartsWith("HTTP/1.1 400 Bad Request\r\n"));
    EXPECT_THAT(second, HasSubstr("<SOAP-ENV:Value>SOAP-ENV:Sender</SOAP-ENV:Value>"));
    EXPECT_THAT(second, HasSubstr("Profile 9 does not exist</SOAP-ENV:Text>"));
}

TEST_F(ProfileHandlersTest, OtherExceptionsAreTheReceiversWithADetail)
{
    EXPECT_CALL(m_platform.profiles, DeleteProfile)
        .Times(2)
        .WillRepeatedly(Throw(std::runtime_error("broken & bent")));
    const std::string first = Answer("<v:DeleteProfile/>");
    EXPECT_THAT(first, StartsWith("HTTP/1.1 500 Internal Server Error\r\n"));
    EXPECT_THAT(first, HasSubstr("<faultcode>SOAP-ENV:Server</faultcode>"
                                 "<faultstring>An exception occurred</faultstring>"));
    EXPECT_THAT(first, HasSubstr("<detail>broken &amp; bent</detail>"));
    const std::string second = Answer("<v:DeleteProfile/>", wire::kEnvelope12);
    EXPECT_THAT(second, StartsWith("HTTP/1.1 500 Internal Server Error\r\n"));
    EXPECT_THAT(second, HasSubstr("<SOAP-ENV:Value>SOAP-ENV:Receiver</SOAP-ENV:Value>"));
    EXPECT_THAT(second, HasSubstr("<SOAP-ENV:Detail>broken &amp; bent</SOAP-ENV:Detail>"));
}

TEST_F(ProfileHandlersTest, NullArgumentsEndTheProcess)
{
    _VideoAnalytics__StopProfile request;
    _VideoAnalytics__StopProfileResponse response;
    soap* const context = soap_new1(SOAP_C_UTFSTRING);
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(__VideoAnalytics__StopProfile(nullptr, &request, &response), "thesoap != __null");
    EXPECT_DEATH(__VideoAnalytics__StopProfile(context, nullptr, &response), "request != __null");
    EXPECT_DEATH(__VideoAnalytics__StopProfile(context, &request, nullptr), "response != __null");
    soap_free(context);
}

TEST_F(ProfileHandlersTest, RequestsKeepTheirInitialResultsUntilTheManagerWrites)
{
    soap* const context = soap_new1(SOAP_C_UTFSTRING);
    const std::string name;
    EXPECT_CALL(m_platform.profiles, CreateProfile).WillOnce(Return(false));
    EXPECT_CALL(m_platform.profiles, GetActiveProfile).WillOnce(Return(true));
    EXPECT_CALL(m_platform.profiles, GetProfileList).WillOnce(Return(true));
    analyticsapi::CreateProfileRequest create(name, context);
    EXPECT_EQ(create.Execute(), -1);
    EXPECT_EQ(create.ProfileId(), -1);
    analyticsapi::GetActiveProfileRequest active(context);
    EXPECT_EQ(active.Execute(), 0);
    EXPECT_EQ(active.ActiveProfileId(), -1);
    analyticsapi::GetProfileListRequest list(context);
    EXPECT_EQ(list.Execute(), 0);
    EXPECT_TRUE(list.ProfileList().empty());
    soap_free(context);
}

} // namespace
