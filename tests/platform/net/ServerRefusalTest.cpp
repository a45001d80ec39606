// What never becomes a request, and is answered or closed without a worker.

#include "net/ErrorResponse.h"
#include "platform/net/ServerFixture.h"

namespace tarno::osa
{
namespace
{

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ServerRefusal : public ServerFixture
{
  protected:
    ~ServerRefusal() override { EXPECT_EQ(acceptor.served, 0); }

    static auto Refused(const std::string& status, const std::string& sentence)
    {
        return AllOf(StartsWith("HTTP/1.1 " + status +
                                "\r\nContent-Type: text/xml; charset=utf-8\r\nContent-Length: "),
                     HasSubstr("\r\nConnection: close\r\n\r\n<?xml "),
                     HasSubstr("<faultcode>SOAP-ENV:Client</faultcode>"),
                     HasSubstr("<faultstring>" + sentence), EndsWith("</SOAP-ENV:Envelope>\n"));
    }
};

TEST_F(ServerRefusal, SaysTheLengthOfItsBody)
{
    Start();
    const std::string answer = AnswerTo("nonsense\r\n");
    const std::size_t body = answer.find("\r\n\r\n") + 4;
    EXPECT_THAT(answer, HasSubstr("Content-Length: " + std::to_string(answer.size() - body) + "\r\n"));
}

TEST_F(ServerRefusal, RefusesAnAnnouncedLengthAtOnce)
{
    Start();
    EXPECT_THAT(AnswerTo("POST / HTTP/1.1\r\nContent-Length: 5000000\r\n\r\n"),
                Refused("413 Payload Too Large", "The request is larger than the 4194304 bytes"));
    EXPECT_THAT(AnswerTo("POST / HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 5000000\r\n\r\n"),
                Not(HasSubstr("100 Continue")));
}

// Such a client reads only when it has sent everything.
TEST_F(ServerRefusal, LetsAClientThatIsStillSendingReadTheAnswer)
{
    Start();
    const auto refused = Refused("413 Payload Too Large", "The request is larger than the 4194304 bytes");
    EXPECT_THAT(AnswerTo(Post(std::string(20'000'000, 'x'))), refused);
    std::string chunked = "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n";
    for (int i = 0; i < 100; ++i)
        chunked += "10000\r\n" + std::string(0x10000, 'x') + "\r\n";
    EXPECT_THAT(AnswerTo(chunked), refused);
}

TEST_F(ServerRefusal, RefusesALargeHeader)
{
    Start();
    EXPECT_THAT(
        AnswerTo("POST / HTTP/1.1\r\nlong: " + std::string(100'000, 'x')),
        Refused("413 Payload Too Large", "The HTTP header of the request is larger than 65536 bytes"));
}

TEST_F(ServerRefusal, RefusesWhatIsNoHttpWithoutWaitingForMore)
{
    Start();
    for (const std::string& bytes : {
             std::string("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 11), // the hello of TLS
             std::string("PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n"),
             std::string("GET /\r\n"),
             std::string("nonsense\r\n"),
             std::string("POST / HTTP/1.1\r\nContent-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n"),
         })
        EXPECT_THAT(AnswerTo(bytes),
                    Refused("400 Bad Request", "The bytes received are not a valid HTTP/1.1 request"))
            << bytes;
}

TEST_F(ServerRefusal, RefusesHeadAndOptions)
{
    Start();
    EXPECT_THAT(
        AnswerTo("OPTIONS * HTTP/1.1\r\nHost: camera\r\n\r\n"),
        AllOf(Refused("405 Method Not Allowed", "This service takes requests by the HTTP method POST only"),
              HasSubstr("\r\nAllow: POST\r\n")));
    // An answer to HEAD has no body.
    EXPECT_THAT(AnswerTo("HEAD / HTTP/1.1\r\nHost: camera\r\n\r\n"),
                AllOf(StartsWith("HTTP/1.1 405 "), EndsWith("\r\nConnection: close\r\n\r\n")));
}

TEST_F(ServerRefusal, RefusesARequestThatEndsInTheMiddle)
{
    Start();
    const std::string request = Post("hello");
    for (const std::size_t size : {std::size_t(1), std::size_t(20), request.size() - 1})
    {
        const Client client(url);
        client.Send(request.substr(0, size));
        client.EndSending();
        EXPECT_THAT(client.ReadAll(), Refused("400 Bad Request", "The connection ended in the middle"))
            << size;
    }
}

TEST_F(ServerRefusal, RefusesASlowRequest)
{
    limits.requestTime = std::chrono::seconds(1);
    Start();
    const Client client(url);
    const auto start = std::chrono::steady_clock::now();
    const std::string request = Post("hello");
    // Bytes that keep coming don't move the deadline.
    for (std::size_t i = 0; i < request.size() && !client.Readable(std::chrono::milliseconds(50)); ++i)
        client.Send(request.substr(i, 1));
    EXPECT_THAT(client.ReadAll(),
                Refused("408 Request Timeout", "The request did not arrive whole within 1 seconds"));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST_F(ServerRefusal, ClosesASilentConnectionWithoutAByte)
{
    limits.requestTime = std::chrono::seconds(1);
    Start();
    const Client silent(url);
    const Client ended(url);
    ended.EndSending();
    EXPECT_EQ(ended.ReadAll(), "");
    EXPECT_EQ(silent.ReadAll(), "");
}

TEST(ErrorResponse, BlamesTheClientForNothingThatMaySucceedLater)
{
    for (const Refusal later : {Refusal::Busy, Refusal::NoMemory})
    {
        EXPECT_THAT(ErrorResponse(later, Limits()),
                    AllOf(StartsWith("HTTP/1.1 503 "), HasSubstr("<faultcode>SOAP-ENV:Server</faultcode>")));
        EXPECT_THAT(ErrorResponse(later, Limits(), SoapVersion::Soap12),
                    HasSubstr("<SOAP-ENV:Value>SOAP-ENV:Receiver</SOAP-ENV:Value>"));
    }
}

} // namespace
} // namespace tarno::osa
