// Requests that are served: framing over a real connection, and the ways in which clients send.

#include "platform/net/ServerFixture.h"

namespace tarno::osa
{
namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using ServerRequest = ServerFixture;

TEST_F(ServerRequest, ServesAWholeRequest)
{
    Start();
    EXPECT_EQ(Ask("hello"),
              "POST / HTTP/1.1\r\nContent-Length:                    5\r\nHost: camera\r\n\r\nhello");
    EXPECT_EQ(acceptor.served, 1);
}

TEST_F(ServerRequest, HandsNothingToAWorkerBeforeTheLastByte)
{
    Start();
    const Client client(url);
    const std::string request = Post("hello");
    for (std::size_t i = 0; i + 1 < request.size(); ++i)
        client.Send(request.substr(i, 1));
    EXPECT_FALSE(client.Readable(std::chrono::milliseconds(300)));
    EXPECT_EQ(acceptor.served, 0);
    client.Send(request.substr(request.size() - 1));
    EXPECT_THAT(client.ReadAll(), EndsWith("hello"));
}

TEST_F(ServerRequest, DecodesAChunkedBody)
{
    Start();
    EXPECT_THAT(AnswerTo("POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n"
                         "3;x=y\r\nhel\r\n2\r\nlo\r\n0\r\nAfter: all\r\n\r\n"),
                EndsWith("  5\r\n\r\nhello"));
}

TEST_F(ServerRequest, TakesABodyOfTheLargestSize)
{
    Start();
    const std::string body(limits.maxRequestBytes - 100, 'x');
    EXPECT_THAT(Ask(body), EndsWith("\r\n\r\n" + body));
}

TEST_F(ServerRequest, ContinuesAtOnceAndOnce)
{
    Start();
    const Client client(url);
    client.Send("POST / HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 5\r\n\r\n");
    const std::string expected = "HTTP/1.1 100 Continue\r\n\r\n";
    EXPECT_EQ(client.ReadSome(expected.size()), expected);
    client.Send("he");
    EXPECT_FALSE(client.Readable(std::chrono::milliseconds(300)));
    client.Send("llo");
    EXPECT_EQ(client.ReadAll(), "POST / HTTP/1.1\r\nContent-Length:                    5\r\n\r\nhello");
}

TEST_F(ServerRequest, AnswersAClientThatEndedItsSending)
{
    acceptor.script = [](TcpSocket& socket)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        ScriptedAcceptor::SendAll(socket, ScriptedAcceptor::ReadAll(socket));
    };
    Start();
    const Client client(url);
    client.Send(Post("hello"));
    client.EndSending();
    EXPECT_THAT(client.ReadAll(), EndsWith("hello"));
}

TEST_F(ServerRequest, IgnoresASecondRequest)
{
    Start();
    EXPECT_THAT(AnswerTo(Post("one") + Post("two")), EndsWith("\r\n\r\none"));
    // Also one that the server hasn't read with the first.
    const std::string large(3'000'000, 'x');
    EXPECT_THAT(AnswerTo(Post("one") + Post(large)), EndsWith("\r\n\r\none"));
    EXPECT_EQ(acceptor.served, 2);
}

TEST_F(ServerRequest, ClosesWithoutAByteIfTheAnswerIsEmpty)
{
    acceptor.script = [](TcpSocket&) {};
    Start();
    EXPECT_EQ(Ask(), "");
}

TEST_F(ServerRequest, EndsAConnectionWhoseSocketWasNeverReleased)
{
    struct Forgetful : ITcpSocketAccept
    {
        void AcceptSocket(TcpSocket* socket) override { forgotten.reset(socket); }
        std::unique_ptr<TcpSocket> forgotten;
    } forgetful;
    Server loop(forgetful, limits);
    EXPECT_EQ(osa::Ask(loop.Start(options)), "");
    loop.Stop();
    EXPECT_THROW(forgetful.forgotten->SendAll("late", 4), SocketException);
}

TEST_F(ServerRequest, SendsALargeAnswerToASlowReader)
{
    const std::string large(8 * 1024 * 1024, 'x');
    acceptor.script = [&large](TcpSocket& socket) { ScriptedAcceptor::SendAll(socket, large); };
    options.bufferBytes = 65536;
    Start();
    Client client;
    client.ReceiveBuffer(4096);
    client.Connect(url);
    client.Send(Post("body"));
    std::size_t read = 0;
    for (int round = 0; round < 20; ++round)
    {
        read += client.ReadSome(1000).size();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(Ask(), large); // somebody else in between
    EXPECT_EQ(read + client.ReadAll().size(), large.size());
}

TEST_F(ServerRequest, TellsAWorkerThatItsPeerVanished)
{
    std::atomic<bool> told = false;
    std::atomic<bool> working = false;
    acceptor.script = [&](TcpSocket& socket)
    {
        working = true;
        told = Eventually(
            [&socket]
            {
                try
                {
                    socket.SendAll("x", 1);
                    return false;
                }
                catch (const SocketException& failure)
                {
                    return failure.GetError() == SocketException::kError;
                }
            });
    };
    Start();
    Client client(url);
    client.Send(Post("body"));
    ASSERT_TRUE(Eventually([&] { return working.load(); }));
    client.Vanish();
    EXPECT_TRUE(Eventually([&] { return told.load(); }));
    acceptor.script = [](TcpSocket& socket) { ScriptedAcceptor::SendAll(socket, "fine"); };
    EXPECT_EQ(Ask(), "fine");
}

} // namespace
} // namespace tarno::osa
