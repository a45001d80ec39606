// A server whose threads are all busy, and the connections that come meanwhile.

#include "platform/net/ServerFixture.h"

#include <future>
#include <vector>

namespace tarno::osa
{
namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class ServerBusy : public ServerFixture
{
  protected:
    ~ServerBusy() override { gate.Open(); }

    // Serves as many requests as it does at a time, until the gate is opened.
    void StartBusy(int requests = kServing)
    {
        acceptor.script = [this](TcpSocket& socket)
        {
            gate.Wait();
            ScriptedAcceptor::SendAll(socket, ScriptedAcceptor::ReadAll(socket));
        };
        Start();
        for (int i = 0; i < requests; ++i)
            busy.push_back(Send("busy"));
        ASSERT_TRUE(Eventually([this, requests] { return acceptor.running == requests; }));
    }
    Client Send(std::string_view body) const
    {
        Client client(url);
        client.Send(Post(body));
        return client;
    }
    void ExpectAllAnswered()
    {
        gate.Open();
        for (const Client& client : busy)
            EXPECT_THAT(client.ReadAll(), EndsWith("busy"));
    }

    Gate gate;
    std::vector<Client> busy;
};

TEST_F(ServerBusy, ConnectionsAreReadTimedAndRefusedAllTheSame)
{
    limits.requestTime = std::chrono::seconds(1);
    StartBusy();
    const Client silent(url);
    const Client partial(url);
    partial.Send("POST");
    EXPECT_THAT(AnswerTo("nonsense\r\n\r\n"), StartsWith("HTTP/1.1 400"));
    EXPECT_THAT(partial.ReadAll(), StartsWith("HTTP/1.1 408"));
    EXPECT_EQ(silent.ReadAll(), "");
    EXPECT_EQ(acceptor.running, kServing);
    ExpectAllAnswered();
}

TEST_F(ServerBusy, RequestsWaitForTheirTurn)
{
    StartBusy();
    std::vector<Client> waiting;
    for (int i = 0; i < 20; ++i)
        waiting.push_back(Send("waited"));
    ASSERT_TRUE(Eventually([this] { return server->WaitingRequests() == 20; }));
    EXPECT_EQ(acceptor.served, kServing);
    ExpectAllAnswered();
    for (const Client& client : waiting)
        EXPECT_THAT(client.ReadAll(), EndsWith("waited"));
}

TEST_F(ServerBusy, ConnectionsThatAreServedCountAsConnections)
{
    limits.maxConnections = 2;
    StartBusy(2);
    const Client third = Send("third");
    EXPECT_EQ(server->Waiting(), 0U); // it isn't accepted
    EXPECT_EQ(acceptor.served, 2);
    ExpectAllAnswered();
    EXPECT_THAT(third.ReadAll(), EndsWith("third"));
    EXPECT_THAT(Ask(), EndsWith("body"));
}

// A thread that is blocked by something else than its work leaves its turn to others.
TEST_F(ServerBusy, BlockedRequestsTakeNoTurn)
{
    acceptor.script = [this](TcpSocket& socket)
    {
        const std::string request = ScriptedAcceptor::ReadAll(socket);
        if (request.ends_with("busy"))
        {
            LeaderFollowers::Blocked(true);
            gate.Wait();
            LeaderFollowers::Blocked(false);
        }
        ScriptedAcceptor::SendAll(socket, request);
    };
    Start();
    for (int i = 0; i < kServing + 10; ++i)
        busy.push_back(Send("busy"));
    ASSERT_TRUE(Eventually([this] { return acceptor.running == kServing + 10; }));
    EXPECT_THAT(Ask(), EndsWith("body"));
    ExpectAllAnswered();
}

TEST_F(ServerBusy, OneAllowedConnectionAfterTheOther)
{
    limits.maxConnections = 1;
    Start();
    std::vector<std::future<std::string>> answers;
    for (int i = 0; i < 20; ++i)
        answers.push_back(std::async(std::launch::async, [this] { return Ask(); }));
    for (auto& answer : answers)
        EXPECT_THAT(answer.get(), EndsWith("body"));
}

TEST_F(ServerBusy, DrainAnswersWhatIsServedAndAcceptsNothing)
{
    StartBusy();
    auto drained = std::async(std::launch::async, [this] { return server->Drain(std::chrono::minutes(1)); });
    ASSERT_TRUE(Eventually([this] { return !Client().TryConnect(url); }));
    EXPECT_EQ(drained.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    ExpectAllAnswered();
    EXPECT_TRUE(drained.get());
    EXPECT_EQ(acceptor.served, kServing);
}

TEST_F(ServerBusy, StopAnswersWhatIsServedAndDropsWhatWaits)
{
    StartBusy();
    const Client waiting = Send("waiting");
    ASSERT_TRUE(Eventually([this] { return server->WaitingRequests() == 1; }));
    auto stopped = std::async(std::launch::async, [this] { server->Stop(); });
    ASSERT_TRUE(Eventually([this] { return !server->Listening(); }));
    EXPECT_EQ(stopped.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    ExpectAllAnswered();
    stopped.get();
    EXPECT_EQ(waiting.ReadAll(), "");
    EXPECT_EQ(acceptor.served, kServing);
}

} // namespace
} // namespace tarno::osa
