// The transport on a scripted connection: its hooks one by one, and whole exchanges.

#include "Wire.h"

#include <SoapRequest.h>

#include <fake-platform/FakePlatform.h>

#include <analytics/Document.h>

#include <soapH.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace
{

using analytics::kestrile::SoapIO;
using Transport = SoapIO::SoapIOImpl;
using tarno::osa::SocketException;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class SoapIOTest : public testing::Test
{
  protected:
    SoapIOTest()
        : m_socket(new fake::ScriptedSocket(m_record, "")), m_soap(m_transport.GetSoapStruct(m_socket))
    {
    }
    ~SoapIOTest() override
    {
        Transport::Close(m_soap);
        soap_delete(m_soap, nullptr);
        soap_end(m_soap);
        soap_free(m_soap);
    }

    fake::Platform m_platform;
    fake::SocketRecord m_record;
    Transport m_transport;
    fake::ScriptedSocket* m_socket;
    soap* m_soap;
};

TEST_F(SoapIOTest, ContextHasTheHooksTheTimeOutAndTheSocket)
{
    EXPECT_EQ(m_soap->fposthdr, &Transport::PostHeader);
    EXPECT_EQ(m_soap->fsend, &Transport::Send);
    EXPECT_EQ(m_soap->frecv, &Transport::Recv);
    EXPECT_EQ(m_soap->fclose, &Transport::Close);
    EXPECT_EQ(m_soap->fclosesocket, nullptr);
    EXPECT_EQ(m_soap->fshutdownsocket, nullptr);
    EXPECT_EQ(m_soap->faccept, nullptr);
    EXPECT_EQ(m_soap->recv_timeout, 10);
    EXPECT_EQ(Transport::GetTcpSocket(m_soap), m_socket);
    EXPECT_EQ(m_soap->omode & SOAP_IO_KEEPALIVE, 0);
    EXPECT_NE(m_soap->imode & SOAP_XML_TREE, 0);
    EXPECT_NE(m_soap->imode & SOAP_C_UTFSTRING, 0);
    EXPECT_NE(m_soap->omode & SOAP_C_UTFSTRING, 0);
}

TEST_F(SoapIOTest, SendSendsAll)
{
    EXPECT_EQ(Transport::Send(m_soap, "abc", 3), 0);
    EXPECT_EQ(m_soap->errnum, 0);
    EXPECT_EQ(m_record.sent, "abc");
}

struct ErrorRow
{
    int thrown;
    int errnumOfSend;
    int errnumOfRecv;
};

TEST_F(SoapIOTest, SocketErrorsMapDifferentlyInTheTwoDirections)
{
    for (const ErrorRow& row : {ErrorRow{0, 0, 0}, {1, 1, 1}, {2, 9, 2}, {3, 3, 9}, {5, 5, 5}})
    {
        m_socket->onSend = [&] { throw fake::Error(row.thrown); };
        EXPECT_EQ(Transport::Send(m_soap, "x", 1), -1);
        EXPECT_EQ(m_soap->errnum, row.errnumOfSend) << row.thrown;

        m_socket->onRecv = [&]() -> int { throw fake::Error(row.thrown); };
        char buffer[4];
        EXPECT_EQ(Transport::Recv(m_soap, buffer, sizeof buffer), 0U);
        EXPECT_EQ(m_soap->errnum, row.errnumOfRecv) << row.thrown;
    }
}

TEST_F(SoapIOTest, SendDoesNotRetryAnInterruptedCall)
{
    int calls = 0;
    m_socket->onSend = [&]
    {
        ++calls;
        throw fake::Error(4);
    };
    EXPECT_EQ(Transport::Send(m_soap, "x", 1), -1);
    EXPECT_EQ(m_soap->errnum, 4);
    EXPECT_EQ(calls, 1);
}

TEST_F(SoapIOTest, OtherExceptionsEndInTheHooks)
{
    m_socket->onSend = [] { throw std::runtime_error("other"); };
    EXPECT_EQ(Transport::Send(m_soap, "x", 1), -1);
    EXPECT_EQ(m_soap->errnum, 9);
    m_socket->onRecv = []() -> int { throw 1; };
    char buffer[4];
    EXPECT_EQ(Transport::Recv(m_soap, buffer, sizeof buffer), 0U);
    EXPECT_EQ(m_soap->errnum, 9);
}

TEST_F(SoapIOTest, NegativeResultTakesTheReasonFromErrno)
{
    m_socket->onRecv = []
    {
        errno = EPIPE;
        return -1;
    };
    char buffer[4];
    EXPECT_EQ(Transport::Recv(m_soap, buffer, sizeof buffer), 0U);
    EXPECT_EQ(m_soap->errnum, EPIPE);
}

TEST_F(SoapIOTest, InterruptedReadIsRetriedWithTheFullTimeOut)
{
    int interruptions = 1000;
    m_socket->onRecv = [&]() -> int
    {
        if (interruptions-- > 0)
            throw fake::Error(4);
        return 0;
    };
    char buffer[4];
    EXPECT_EQ(Transport::Recv(m_soap, buffer, sizeof buffer), 0U);
    EXPECT_EQ(m_soap->errnum, 0);
    EXPECT_EQ(m_record.timeouts, std::vector<unsigned int>(1001, 10U));
}

TEST_F(SoapIOTest, AfterCloseSendFailsAndRecvReportsTheEnd)
{
    EXPECT_EQ(Transport::Close(m_soap), 0);
    EXPECT_EQ(m_record.deleted, 1);
    EXPECT_EQ(Transport::GetTcpSocket(m_soap), nullptr);
    EXPECT_EQ(Transport::Send(m_soap, "x", 1), -1);
    EXPECT_EQ(m_soap->errnum, 9);
    char buffer[4];
    EXPECT_EQ(Transport::Recv(m_soap, buffer, sizeof buffer), 0U);
    EXPECT_EQ(m_soap->errnum, 0);
    EXPECT_EQ(Transport::Close(m_soap), 0) << "a second close deletes nothing";
    EXPECT_EQ(m_record.deleted, 1);
}

// Header calls, with gSOAP's own writer replaced by a recorder.
std::vector<std::string> gPosted;
int Record(soap*, const char* key, const char* val)
{
    gPosted.push_back(std::string(key != nullptr ? key : "(end)") + "|" + (val != nullptr ? val : "(none)"));
    return 42;
}

TEST_F(SoapIOTest, StatusBecomesTheStatusLineInBothFormsOfTheRuntime)
{
    gPosted.clear();
    static_cast<Transport::SoapUserData*>(m_soap->user)->post = Record;
    m_soap->http_version = "1.0";
    EXPECT_EQ(Transport::PostHeader(m_soap, "Status", "200 OK"), 42);
    EXPECT_EQ(Transport::PostHeader(m_soap, "Status: 500 Internal Server Error", nullptr), 42);
    EXPECT_EQ(Transport::PostHeader(m_soap, "Content-Type", "text/xml"), 42);
    EXPECT_EQ(Transport::PostHeader(m_soap, nullptr, nullptr), 42);
    EXPECT_THAT(gPosted, ElementsAre("HTTP/1.0 200 OK|(none)", "HTTP/1.0 500 Internal Server Error|(none)",
                                     "Content-Type|text/xml", "(end)|(none)"));
}

TEST(ExchangeTest, ResponseBeginsWithAStatusLineInTheRequestsVersion)
{
    fake::Platform platform;
    EXPECT_CALL(platform.profiles, GetProfileList).WillRepeatedly(testing::Return(true));
    for (const char* version : {"1.1", "1.0"})
    {
        const fake::SocketRecord record =
            wire::Serve(wire::Http(wire::Envelope("<v:GetProfileList/>"), version));
        EXPECT_THAT(record.sent, StartsWith("HTTP/" + std::string(version) + " 200 OK\r\n"));
        EXPECT_THAT(record.sent, Not(HasSubstr("Status:")));
        EXPECT_THAT(record.sent, HasSubstr("\r\nConnection: close\r\n"));
        EXPECT_EQ(record.deleted, 1);
        EXPECT_THAT(record.bufferSizes, ElementsAre(65536U));
        // Faults of the runtime's own, whose texts go through the buffer that the request line came in.
        for (const std::string& message : {wire::Envelope("<v:Reboot/>"), wire::Envelope("<v:GetProfile")})
            EXPECT_THAT(wire::Serve(wire::Http(message, version)).sent,
                        StartsWith("HTTP/" + std::string(version) + " 500 Internal Server Error\r\n"))
                << message;
    }
    analyticsapi::SoapRequest::Shutdown();
}

TEST(ExchangeTest, RequestMayArriveInPieces)
{
    fake::Platform platform;
    EXPECT_CALL(platform.profiles, GetProfileList).WillRepeatedly(testing::Return(true));
    for (const char* version : {"1.1", "1.0"})
    {
        const std::string request = wire::Http(wire::Envelope("<v:GetProfileList/>"), version);
        for (const std::size_t piece : {1U, 2U, 7U, 14U})
        {
            fake::SocketRecord record;
            auto* const socket = new fake::ScriptedSocket(record, request);
            socket->piece = piece;
            Transport().AcceptSocket(socket);
            EXPECT_EQ(record.sent, wire::Serve(request).sent) << piece;
            EXPECT_THAT(record.sent, StartsWith("HTTP/" + std::string(version) + " 200 OK\r\n"));
        }
    }
    analyticsapi::SoapRequest::Shutdown();
}

TEST(ExchangeTest, TextLongerThanTheBufferArrivesWhole)
{
    fake::Platform platform;
    std::string text;
    std::string plain;
    for (int i = 0; text.size() < std::size_t{SOAP_BUFLEN} * 3; ++i)
    {
        text += "&lt;vertex n=&quot;" + std::to_string(i) + "&quot;/&gt;<![CDATA[&]]>\xc3\xa9";
        plain += "<vertex n=\"" + std::to_string(i) + "\"/>&\xc3\xa9";
    }
    EXPECT_CALL(platform.profiles, CreateProfile(testing::_, plain)).WillOnce(testing::Return(true));
    EXPECT_THAT(wire::Answer("<v:CreateProfile><name>" + text + "</name></v:CreateProfile>"),
                StartsWith("HTTP/1.1 200 OK\r\n"));
    analyticsapi::SoapRequest::Shutdown();
}

TEST(ExchangeTest, SilentClientEndsTheConnectionWithoutAResponse)
{
    fake::Platform platform;
    fake::SocketRecord record;
    auto* const socket = new fake::ScriptedSocket(record, "");
    socket->onRecv = []() -> int { throw fake::Error(SocketException::kTimeout); };
    Transport().AcceptSocket(socket);
    EXPECT_EQ(record.sent, "");
    EXPECT_EQ(record.deleted, 1);
    ASSERT_FALSE(record.timeouts.empty());
    EXPECT_EQ(record.timeouts.front(), 10U);
}

TEST(ExchangeTest, ClientThatClosesDuringTheResponseIsCleanedUpAfter)
{
    fake::Platform platform;
    EXPECT_CALL(platform.profiles, GetProfileList).WillOnce(testing::Return(true));
    fake::SocketRecord record;
    auto* const socket = new fake::ScriptedSocket(record, wire::Http(wire::Envelope("<v:GetProfileList/>")));
    socket->onSend = [] { throw fake::Error(SocketException::kError); };
    Transport().AcceptSocket(socket);
    EXPECT_EQ(record.sent, "");
    EXPECT_EQ(record.deleted, 1);
    analyticsapi::SoapRequest::Shutdown();
}

TEST(ExchangeTest, OneRequestAConnectionAndKeepAliveIsNotOffered)
{
    fake::Platform platform;
    EXPECT_CALL(platform.profiles, GetProfileList).Times(1).WillOnce(testing::Return(true));
    const std::string one = wire::Http(wire::Envelope("<v:GetProfileList/>"));
    std::string asking = one;
    asking.insert(asking.find("\r\n") + 2, "Connection: keep-alive\r\n");
    EXPECT_THAT(wire::Serve(asking + one).sent, HasSubstr("\r\nConnection: close\r\n"));
    analyticsapi::SoapRequest::Shutdown();
}

TEST(ExchangeTest, ManyIdentifiersCostLinearTime)
{
    // 20,000 elements with identifiers would cost minutes if gSOAP kept them for multi-references.
    fake::Platform platform;
    std::string body = "<v:CreateProfile>";
    for (int i = 0; i < 20000; ++i)
        body += "<a id=\"i" + std::to_string(i) + "\" href=\"#j" + std::to_string(i) + "\"/>";
    EXPECT_CALL(platform.profiles, CreateProfile).WillOnce(testing::Return(true));
    EXPECT_THAT(wire::Answer(body + "</v:CreateProfile>"), StartsWith("HTTP/1.1 200 OK\r\n"));
    analyticsapi::SoapRequest::Shutdown();
}

TEST(ExchangeTest, AFaultQuotesWhatXmlCanHold)
{
    fake::Platform platform;
    const struct
    {
        std::string name;
        std::string quoted;
    } cases[] = {
        {"Caf\xc3\xa9\xe4\xb8\xad\xf0\x9f\x98\x80", "Caf\xc3\xa9\xe4\xb8\xad\xf0\x9f\x98\x80"},
        {"a\xff\xfe", "a??"},
        {"a\x80", "a?"},
        {"a\xe4\xb8", "a??"},
        {"a\xc3", "a?"},
        {"a\xc0\xaf", "a??"},
        {"a\xe0\x80\xaf", "a???"},
        {"a\xed\xa0\x80", "a???"},
        {"a\xef\xbf\xbe", "a???"},
        {"a\xf4\x90\x80\x80", "a????"},
    };
    for (const auto& c : cases)
    {
        for (const std::string space : {wire::kEnvelope11, wire::kEnvelope12})
        {
            const std::string answer = wire::Answer("<v:" + c.name + "/>", space);
            EXPECT_THAT(answer, HasSubstr("Method 'v:" + c.quoted + "' not implemented"));
            analytics::Document document;
            EXPECT_TRUE(document.ParseString(answer.substr(answer.find("\r\n\r\n") + 4))) << answer;
        }
    }
}

TEST(ExchangeTest, TheDetailOfAFaultIsText)
{
    fake::Platform platform;
    EXPECT_CALL(platform.profiles, GetProfileList)
        .WillRepeatedly(testing::Throw(std::runtime_error("near \"<\": a & b \xff")));
    for (const std::string space : {wire::kEnvelope11, wire::kEnvelope12})
    {
        const std::string answer = wire::Answer("<v:GetProfileList/>", space);
        EXPECT_THAT(answer, HasSubstr("near \"&lt;\": a &amp; b ?</"));
        analytics::Document document;
        EXPECT_TRUE(document.ParseString(answer.substr(answer.find("\r\n\r\n") + 4))) << answer;
    }
    analyticsapi::SoapRequest::Shutdown();
}

TEST(ExchangeTest, AMessageInDimeIsAnsweredInPlainXml)
{
    fake::Platform platform;
    EXPECT_CALL(platform.profiles, GetProfileList).WillRepeatedly(testing::Return(true));
    const std::string plain = wire::Http(wire::Envelope("<v:GetProfileList/>"));
    std::string message = plain.substr(plain.find("\r\n\r\n") + 4);
    // One record, the first and last, of the type that names its namespace; options and id are empty.
    const std::string type = "http://schemas.xmlsoap.org/soap/envelope/";
    std::string record("\x0e\x20\0\0\0\0\0", 7);
    record += static_cast<char>(type.size());
    record += std::string("\0\0", 2) + static_cast<char>(message.size() / 256) +
              static_cast<char>(message.size() % 256) + type + std::string((4 - type.size() % 4) % 4, '\0');
    record += message + std::string((4 - message.size() % 4) % 4, '\0');
    for (const std::string verb : {"POST", "PORT"})
    {
        const std::string answer = wire::Serve(verb +
                                               " / HTTP/1.1\r\nContent-Type: application/dime\r\n"
                                               "Content-Length: " +
                                               std::to_string(record.size()) + "\r\n\r\n" + record)
                                       .sent;
        EXPECT_THAT(answer, StartsWith(verb == "POST" ? "HTTP/1.1 200 OK\r\n" : "HTTP/1.1 405 "));
        EXPECT_THAT(answer, HasSubstr("\r\nContent-Type: text/xml; charset=utf-8\r\n"));
        EXPECT_THAT(answer, HasSubstr("\r\n\r\n<?xml "));
    }
}

TEST(ExchangeTest, AnAnswerIsInTheNamespacesOfTheSchema)
{
    fake::Platform platform;
    EXPECT_CALL(platform.profiles, GetProfileList).WillRepeatedly(testing::Return(true));
    for (const std::string date : {"1999", "20\xff", "&quot;"})
        for (const std::string name : {"XMLSchema-instance", "XMLSchema", "soap-encoding"})
        {
            const std::string answer =
                wire::Answer("<v:GetProfileList xmlns:x=\"http://www.w3.org/" + date + "/" + name + "\"/>");
            EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n"));
            EXPECT_THAT(answer, testing::Not(HasSubstr(date + "/"))) << answer;
        }
}

TEST(SoapIOLifeTest, TheTemplateGoesBeforeTheServerStops)
{
    fake::Platform platform;
    {
        SoapIO io;
        io.StartServer(5);
        io.StopServer();
        EXPECT_TRUE(platform.serverCalls.empty()) << "without a server both do nothing";
        io.CreateServer("kestrile-server", 65536 + 7);
        io.StartServer(5);
        io.StopServer();
    }
    EXPECT_THAT(platform.serverCalls, ElementsAre("TcpServer(kestrile-server, 7)", "SetBufferSize(65536)",
                                                  "Start(5)", "Stop()", "Stop()", "~TcpServer()"));
}

} // namespace
