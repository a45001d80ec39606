// The generated types as the service relies on them: defaults, what is read and what is written.

#include "Wire.h"

#include <SoapRequest.h>

#include <fake-platform/FakePlatform.h>

#include <soapH.h>

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

// The program has one table of namespaces, in the transport.
extern struct Namespace namespaces[];

namespace
{

using testing::_;
using testing::HasSubstr;
using testing::Return;
using testing::StartsWith;

struct ContextDeleter
{
    void operator()(soap* context) const
    {
        soap_destroy(context);
        soap_end(context);
        soap_free(context);
    }
};

class WireTypesTest : public testing::Test
{
  protected:
    template <class Type>
    std::string Write(const Type& object, const char* tag)
    {
        std::ostringstream out;
        m_soap->os = &out;
        EXPECT_EQ(soap_begin_send(m_soap.get()), SOAP_OK);
        EXPECT_EQ(object.soap_out(m_soap.get(), tag, -1, nullptr), SOAP_OK);
        EXPECT_EQ(soap_end_send(m_soap.get()), SOAP_OK);
        m_soap->os = nullptr;
        return out.str();
    }

    template <class Type>
    int Read(const std::string& xml, Type& object)
    {
        std::istringstream in(xml);
        m_soap->is = &in;
        soap_begin_recv(m_soap.get());
        const void* const result = object.soap_get(m_soap.get(), nullptr, nullptr);
        m_soap->is = nullptr;
        return result == nullptr ? m_soap->error : SOAP_OK;
    }

    std::unique_ptr<soap, ContextDeleter> m_soap{soap_new1(SOAP_C_UTFSTRING)};
};

TEST(NamespaceTest, FiveRowsInOrder)
{
    const char* const rows[][2] = {{"SOAP-ENV", "http://schemas.xmlsoap.org/soap/envelope/"},
                                   {"SOAP-ENC", "http://schemas.xmlsoap.org/soap/encoding/"},
                                   {"xsi", "http://www.w3.org/2001/XMLSchema-instance"},
                                   {"xsd", "http://www.w3.org/2001/XMLSchema"},
                                   {"VideoAnalytics", "urn:schemas-varlo-com:service:VideoAnalytics:2"}};
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_STREQ(namespaces[i].id, rows[i][0]);
        EXPECT_STREQ(namespaces[i].ns, rows[i][1]);
        EXPECT_EQ(namespaces[i].in != nullptr, i < 4) << "only the standard rows have a wildcard";
    }
    EXPECT_EQ(namespaces[5].id, nullptr);
}

TEST_F(WireTypesTest, BehaviorWithoutOptionalTextsHasFiveChildren)
{
    VideoAnalytics__Behavior behavior;
    behavior.soap_default(m_soap.get());
    behavior.type = "urn:x";
    behavior.fixedPosition = true;
    EXPECT_THAT(Write(behavior, "behavior"),
                HasSubstr(" xsi:type=\"VideoAnalytics:Behavior\"><type>urn:x</type><userName/>"
                          "<availability>0</availability><supportAdvanceMode>false</supportAdvanceMode>"
                          "<fixedPosition>true</fixedPosition></behavior>"));
}

TEST_F(WireTypesTest, UnknownAvailabilityIsKeptAndWrittenAsItsNumber)
{
    VideoAnalytics__Behavior behavior;
    ASSERT_EQ(Read("<behavior><type>a</type><availability>7</availability></behavior>", behavior), SOAP_OK);
    EXPECT_EQ(static_cast<int>(behavior.availability), 7);
    EXPECT_EQ(behavior.userName, "") << "a missing element takes its default";
    EXPECT_THAT(Write(behavior, "behavior"), HasSubstr("<availability>7</availability>"));
}

TEST_F(WireTypesTest, AvailabilityThatIsNoIntegerIsATypeError)
{
    VideoAnalytics__Behavior behavior;
    EXPECT_EQ(Read("<behavior><availability>many</availability></behavior>", behavior), SOAP_TYPE);
}

TEST_F(WireTypesTest, FirstUnknownElementIsKeptAndNotWrittenBack)
{
    VideoAnalytics__Behavior behavior;
    ASSERT_EQ(Read("<behavior><x>1</x><type>a</type><y>2</y><type>b</type></behavior>", behavior), SOAP_OK);
    EXPECT_EQ(behavior.type, "a") << "of an element that comes twice the first is taken";
    ASSERT_NE(behavior.xsd__anyType::__item, nullptr);
    EXPECT_THAT(behavior.xsd__anyType::__item, HasSubstr("<x>1</x>"));
    EXPECT_THAT(Write(behavior, "behavior"), Not(HasSubstr("<x>")));
}

TEST_F(WireTypesTest, ProfileAtRestHasItsIdentifierAndTypeAlone)
{
    VideoAnalytics__ProfileSummary profile;
    profile.soap_default(m_soap.get());
    profile.__item = "Day";
    profile.id = 3;
    EXPECT_THAT(Write(profile, "profile"),
                HasSubstr(" xsi:type=\"VideoAnalytics:ProfileSummary\" id=\"3\">Day<"));
}

TEST_F(WireTypesTest, TypeTreeCarriesItsTypesAndBuiltInFieldsDoNot)
{
    VideoAnalytics__Profile profile;
    profile.soap_default(m_soap.get());
    auto* const number = soap_new_xsd__unsignedInt(m_soap.get(), -1);
    number->__item = 5;
    profile.analyticConfig = number;
    const std::string text = Write(profile, "p");
    EXPECT_THAT(text, HasSubstr("<analyticConfig xsi:type=\"xsd:unsignedInt\">5</analyticConfig>"));

    VideoAnalytics__MetadataURL url;
    url.soap_default(m_soap.get());
    url.__item = "rtsp://camera/1";
    EXPECT_THAT(Write(url, "u"), Not(HasSubstr("transmission"))) << "required, and not written when empty";
}

TEST_F(WireTypesTest, TypesOfTheSchemaThatNoOperationUses)
{
    VideoAnalytics__SensitiveROI zone;
    zone.soap_default(m_soap.get());
    zone.vertices = soap_new__VideoAnalytics__struct_6(m_soap.get(), -1);
    auto* const vertex = soap_new_VideoAnalytics__Vertex(m_soap.get(), -1);
    vertex->x = 1;
    vertex->y = 4294967295U; // no bound is tested
    zone.vertices->vertex.push_back(vertex);
    zone.direction = VideoAnalytics__Direction__3;
    zone.zoneSensitivity = 11;
    EXPECT_THAT(
        Write(zone, "z"),
        HasSubstr("<id>0</id><name/><enable>false</enable><dwellTime>0</dwellTime>"
                  "<include>false</include><vertices><vertex xsi:type=\"VideoAnalytics:Vertex\"><x>1</x>"
                  "<y>4294967295</y></vertex></vertices><direction>3</direction>"
                  "<zoneSensitivity>11</zoneSensitivity>"));

    VideoAnalytics__CalibrationParameter parameter;
    parameter.soap_default(m_soap.get());
    EXPECT_THAT(Write(parameter, "c"), HasSubstr("<resize>0</resize><moveable>0</moveable><vertices"))
        << "held by value, hence always written";
}

class MessagesTest : public testing::Test
{
  protected:
    ~MessagesTest() override { analyticsapi::SoapRequest::Shutdown(); }
    fake::Platform m_platform;
};

constexpr char kNoMethod[] = "not implemented: method name or namespace not recognized";

TEST_F(MessagesTest, UnknownMethods)
{
    for (const char* body :
         {"", "<v:Reboot/>", "<GetProfileList/>", "<o:GetProfileList xmlns:o='urn:other'/>",
          "<v:getprofilelist/>", "<v:GetProfileListResponse/>"})
    {
        const std::string answer = wire::Answer(body);
        EXPECT_THAT(answer, StartsWith("HTTP/1.1 500 Internal Server Error\r\n")) << body;
        EXPECT_THAT(answer, HasSubstr(kNoMethod)) << body;
    }
}

TEST_F(MessagesTest, EveryOperationOfTheSchemaIsRecognised)
{
    for (const char* operation :
         {"GetBehaviorAvailability", "GetBehaviorAvailability2", "GetProfileBehavior", "ExecuteProfile",
          "GetActiveProfile", "GetProfileList", "StopProfile", "AlgorithmControl", "DeleteProfileBehavior",
          "GetDefaultConfiguration", "GetDefaultScene", "SetProfileBehavior", "CreateProfile",
          "DeleteProfile", "GetProfileScene", "SetProfileScene"})
        EXPECT_THAT(wire::Answer("<v:" + std::string(operation) + "/>"), Not(HasSubstr(kNoMethod)))
            << operation;
}

TEST_F(MessagesTest, AnswerFollowsTheRequestsSoapVersion)
{
    EXPECT_CALL(m_platform.profiles, GetProfileList(_)).Times(2).WillRepeatedly(Return(true));
    const std::string first = wire::Answer("<v:GetProfileList/>");
    EXPECT_THAT(first, HasSubstr("\r\nContent-Type: text/xml; charset=utf-8\r\n"));
    EXPECT_THAT(first,
                HasSubstr("<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""));
    const std::string second = wire::Answer("<v:GetProfileList/>", wire::kEnvelope12);
    EXPECT_THAT(second, HasSubstr("\r\nContent-Type: application/soap+xml; charset=utf-8"));
    EXPECT_THAT(second,
                HasSubstr("<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://www.w3.org/2003/05/soap-envelope\""));
    for (const char* prefix : {"SOAP-ENV", "SOAP-ENC", "xsi", "xsd", "VideoAnalytics"})
        EXPECT_THAT(first, HasSubstr(" xmlns:" + std::string(prefix) + "=\"")) << prefix;
    EXPECT_THAT(first, Not(HasSubstr("encodingStyle")));
}

TEST_F(MessagesTest, TextOfAWrongTypeIsAFaultAndReachesNoRequest)
{
    EXPECT_CALL(m_platform.profiles, DeleteProfile).Times(0);
    for (const char* number : {"seven", "2147483648", "1.5", "1 2"})
        EXPECT_THAT(wire::Answer("<v:DeleteProfile><profileId>" + std::string(number) +
                                 "</profileId></v:DeleteProfile>"),
                    HasSubstr("<faultcode>SOAP-ENV:Client</faultcode>"))
            << number;
}

TEST_F(MessagesTest, BrokenMessagesAreFaultsOfTheSender)
{
    for (const char* body : {"<v:GetProfileList>", "<v:CreateProfile><name>a</v:CreateProfile>", "&"})
        EXPECT_THAT(wire::Answer(body), HasSubstr("<faultcode>SOAP-ENV:Client</faultcode>")) << body;
    EXPECT_THAT(wire::Serve(wire::Http("no xml")).sent, HasSubstr("<faultcode>SOAP-ENV:Client</faultcode>"));
}

TEST_F(MessagesTest, AnEnvelopeOfAnotherVersionIsAVersionMismatch)
{
    for (const char* space :
         {"http://www.w3.org/2003/07/soap-envelope", "http://www.w3.org/\xff/soap-envelope"})
    {
        const std::string answer = wire::Answer("<v:GetProfileList/>", space);
        EXPECT_THAT(answer,
                    HasSubstr("<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"" + std::string(wire::kEnvelope11)));
        EXPECT_THAT(answer, HasSubstr("<faultcode>SOAP-ENV:VersionMismatch</faultcode>"));
    }
}

TEST_F(MessagesTest, OnlyPostIsServed)
{
    const std::string answer = wire::Serve("GET / HTTP/1.1\r\nHost: camera\r\n\r\n").sent;
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 405 "));
    EXPECT_THAT(answer, HasSubstr("HTTP GET method not implemented"));
}

TEST_F(MessagesTest, PathAndActionPlayNoPart)
{
    EXPECT_CALL(m_platform.profiles, GetProfileList(_)).WillOnce(Return(true));
    std::string message = wire::Http(wire::Envelope("<v:GetProfileList/>"));
    message.replace(0, 6, "POST /any/path?x=1 ");
    message.insert(message.find("\r\n") + 2, "SOAPAction: \"urn:other#Method\"\r\n");
    EXPECT_THAT(wire::Serve(message).sent, StartsWith("HTTP/1.1 200 OK\r\n"));
}

} // namespace
