// How a server ends: at once, or after what is in progress.

#include "platform/net/ServerFixture.h"

#include <future>
#include <vector>

namespace tarno::osa
{
namespace
{

using testing::EndsWith;

using ServerEnd = ServerFixture;

constexpr std::chrono::seconds kLong(60);

TEST_F(ServerEnd, StopsUnderLoadWithNoAcceptSocketRunning)
{
    acceptor.script = [](TcpSocket& socket)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        ScriptedAcceptor::SendAll(socket, "done");
    };
    Start();
    std::atomic<bool> enough = false;
    std::vector<std::thread> clients;
    for (int i = 0; i < 8; ++i)
        clients.emplace_back(
            [this, &enough]
            {
                while (!enough)
                {
                    const Client client;
                    if (client.TryConnect(url) && client.Send(Post("body")))
                        client.ReadAll();
                }
            });
    EXPECT_TRUE(Eventually([this] { return acceptor.served > 50; }));
    server->Stop();
    EXPECT_EQ(acceptor.running, 0);
    EXPECT_FALSE(server->Listening());
    enough = true;
    for (std::thread& client : clients)
        client.join();
}

TEST_F(ServerEnd, StopClosesConnectionsThatWait)
{
    Start();
    const Client silent(url);
    const Client partial(url);
    partial.Send("POST");
    EXPECT_THAT(Ask(), EndsWith("body")); // so that both were accepted
    server->Stop();
    server->Stop();
    EXPECT_EQ(silent.ReadAll(), "");
    EXPECT_EQ(partial.ReadAll(), "");
}

TEST_F(ServerEnd, StopFromManyThreadsReturnsToEachWhenAllIsDone)
{
    acceptor.script = [](TcpSocket&) { std::this_thread::sleep_for(std::chrono::milliseconds(300)); };
    Start();
    const Client client(url);
    client.Send(Post("body"));
    ASSERT_TRUE(Eventually([this] { return acceptor.running == 1; }));
    std::vector<std::thread> stops;
    for (int i = 0; i < 4; ++i)
        stops.emplace_back(
            [this]
            {
                server->Stop();
                EXPECT_EQ(acceptor.running, 0);
            });
    for (std::thread& stop : stops)
        stop.join();
}

TEST_F(ServerEnd, StopLetsARunningRequestFinish)
{
    Gate gate;
    acceptor.script = [&gate](TcpSocket& socket)
    {
        gate.Wait();
        ScriptedAcceptor::SendAll(socket, "done");
    };
    Start();
    const Client client(url);
    client.Send(Post("body"));
    ASSERT_TRUE(Eventually([this] { return acceptor.running == 1; }));
    std::thread stop([this] { server->Stop(); });
    EXPECT_TRUE(Eventually([this] { return !server->Listening(); }));
    gate.Open();
    stop.join();
    EXPECT_EQ(client.ReadAll(), "done");
}

TEST_F(ServerEnd, DrainFinishesWhatIsInProgressAndTakesNothingNew)
{
    Gate gate;
    const std::string large(1024 * 1024, 'x');
    acceptor.script = [&](TcpSocket& socket)
    {
        gate.Wait();
        ScriptedAcceptor::SendAll(socket, large);
    };
    options.bufferBytes = 65536;
    Start();
    // One more than there are workers: the last one waits for its turn.
    std::vector<Client> clients;
    for (int i = 0; i < kServing + 1; ++i)
    {
        clients.emplace_back(url);
        clients.back().Send(Post("body"));
    }
    const Client silent(url);
    ASSERT_TRUE(
        Eventually([this] { return acceptor.running == kServing && server->WaitingRequests() == 1; }));
    auto drained = std::async(std::launch::async, [this] { return server->Drain(kLong); });
    EXPECT_EQ(silent.ReadAll(), "");
    EXPECT_FALSE(server->Listening());
    EXPECT_TRUE(Eventually([this] { return !Client().TryConnect(url); }));
    EXPECT_EQ(drained.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    gate.Open();
    for (const Client& client : clients)
        EXPECT_EQ(client.ReadAll().size(), large.size());
    EXPECT_TRUE(drained.get());
}

TEST_F(ServerEnd, DrainWaitsForARequestThatHasBegunToArrive)
{
    Start();
    const std::string request = Post("hello");
    const Client begun(url);
    begun.Send(request.substr(0, 10));
    const Client silent(url);
    ASSERT_TRUE(Eventually([this] { return server->Waiting() == 3; })); // the acceptor is one of them
    auto drained = std::async(std::launch::async, [this] { return server->Drain(kLong); });
    EXPECT_EQ(silent.ReadAll(), "");
    begun.Send(request.substr(10, request.size() - 15));
    EXPECT_EQ(drained.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    begun.Send(request.substr(request.size() - 5));
    EXPECT_THAT(begun.ReadAll(), EndsWith("hello"));
    EXPECT_TRUE(drained.get());
}

TEST_F(ServerEnd, NothingIsServedAnyMoreOnceItIsDrained)
{
    std::atomic<bool> drained = false;
    std::atomic<int> late = 0;
    acceptor.script = [&](TcpSocket& socket)
    {
        late += drained;
        ScriptedAcceptor::SendAll(socket, "done");
        late += drained;
    };
    for (int round = 0; round < 100; ++round)
    {
        acceptor.served = 0;
        drained = false;
        Start();
        std::vector<std::thread> clients;
        for (int i = 0; i < 4; ++i)
            clients.emplace_back(
                [&]
                {
                    while (!drained)
                        if (const Client client; client.TryConnect(url) && client.Send(Post("body")))
                            client.ReadAll();
                });
        EXPECT_TRUE(Eventually([this] { return acceptor.served > 3; }));
        EXPECT_TRUE(server->Drain(kLong));
        drained = true;
        for (std::thread& client : clients)
            client.join();
        server.reset();
    }
    EXPECT_EQ(late, 0);
}

TEST_F(ServerEnd, DrainSaysIfTheTimeWasNotEnough)
{
    Gate gate;
    acceptor.script = [&gate](TcpSocket&) { gate.Wait(); };
    Start();
    const Client client(url);
    client.Send(Post("body"));
    ASSERT_TRUE(Eventually([this] { return acceptor.running == 1; }));
    EXPECT_FALSE(server->Drain(std::chrono::milliseconds(100)));
    gate.Open();
    EXPECT_TRUE(server->Drain(kLong));
    EXPECT_TRUE(server->Drain(kLong));
    server->Stop();
    EXPECT_TRUE(server->Drain(kLong));
}

TEST_F(ServerEnd, DrainDoesNotWaitForClientsThatWereAnswered)
{
    // Such a client is dropped after three seconds at the latest. On a machine that is busy, an end without
    // waiting may take as long now and then.
    const auto endsAtOnce = [this]
    {
        Start();
        const Client client(url);
        client.Send(Post("body"));
        client.ReadSome(10);
        return server->Drain(std::chrono::seconds(2));
    };
    EXPECT_TRUE(Eventually(endsAtOnce));
}

TEST_F(ServerEnd, DrainAndStopMeet)
{
    for (int i = 0; i < 20; ++i)
    {
        Start();
        const Client client(url);
        client.Send(Post("body"));
        auto drained = std::async(std::launch::async, [this] { return server->Drain(kLong); });
        server->Stop();
        EXPECT_TRUE(drained.get());
    }
}

TEST_F(ServerEnd, StartsAndStopsAgainAndAgain)
{
    for (int i = 0; i < 50; ++i)
    {
        Start();
        EXPECT_THAT(Ask(), EndsWith("body"));
        server->Stop();
        options.port = PortOf(url); // free again at once
    }
    EXPECT_EQ(acceptor.served, 50);
}

} // namespace
} // namespace tarno::osa
