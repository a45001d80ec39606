// Many clients, slow or greedy ones, and a process that runs out of something.

#include "platform/net/ServerFixture.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <atomic>
#include <cerrno>
#include <vector>

namespace tarno::osa
{
namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

using ServerLimit = ServerFixture;

// A process without file descriptors, as far as accept4() can tell. To take away the real ones would
// break the sanitizers' own checks, which open pipes.
std::atomic<bool> gNoDescriptors = false;
std::atomic<int> gVainAccepts = 0;

TEST_F(ServerLimit, LetsConnectionsAboveTheLimitWait)
{
    limits.maxConnections = 3;
    Start();
    std::vector<Client> silent;
    for (int i = 0; i < 3; ++i)
        silent.emplace_back(url);
    ASSERT_TRUE(Eventually([this] { return server->Waiting() == 3; })); // nothing is accepted
    const Client waiting(url);
    waiting.Send(Post("body"));
    EXPECT_EQ(acceptor.served, 0);
    silent.pop_back();
    EXPECT_THAT(waiting.ReadAll(), EndsWith("body"));
    EXPECT_THAT(Ask(), EndsWith("body"));
}

TEST_F(ServerLimit, AnswersAHealthyClientAmongManyThatDribble)
{
    Start();
    std::vector<Client> dribbling;
    for (int i = 0; i < 300; ++i)
        dribbling.emplace_back(url);
    const std::string request = Post("body");
    for (std::size_t round = 0; round < 5; ++round)
    {
        for (const Client& client : dribbling)
            client.Send(request.substr(round, 1));
        EXPECT_THAT(Ask(), EndsWith("body"));
    }
    EXPECT_EQ(acceptor.served, 5);
}

TEST_F(ServerLimit, ServesMoreClientsThanWorkers)
{
    Gate gate;
    acceptor.script = [&gate](TcpSocket& socket)
    {
        gate.Wait();
        ScriptedAcceptor::SendAll(socket, "done");
    };
    Start();
    std::vector<Client> clients;
    for (int i = 0; i < 50; ++i)
    {
        clients.emplace_back(url);
        clients.back().Send(Post("body"));
    }
    EXPECT_TRUE(Eventually([this] { return server->WaitingRequests() == 50U - kServing; }));
    EXPECT_TRUE(Eventually([this] { return acceptor.running == kServing; }));
    gate.Open();
    for (const Client& client : clients)
        EXPECT_EQ(client.ReadAll(), "done");
}

TEST_F(ServerLimit, SurvivesAProcessWithoutFileDescriptors)
{
    Start();
    const std::vector<Client> clients(10);
    const auto start = std::chrono::steady_clock::now();
    gNoDescriptors = true;
    for (const Client& client : clients)
    {
        client.Connect(url);
        client.Send(Post("body"));
    }
    ASSERT_TRUE(Eventually([] { return gVainAccepts == 3; }));
    // It doesn't try again and again.
    EXPECT_GE(std::chrono::steady_clock::now() - start, 2 * Server::kAcceptBackoff);
    EXPECT_TRUE(server->Listening());
    gNoDescriptors = false;
    for (const Client& client : clients)
        EXPECT_THAT(client.ReadAll(), EndsWith("body"));
    EXPECT_THAT(Ask(), EndsWith("body"));
}

TEST_F(ServerLimit, KeepsFileDescriptorsForTheRestOfTheProcess)
{
    rlimit files = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &files), 0);
    const rlimit few = {100, files.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    EXPECT_EQ(ConnectionsAllowed(1024), 36U);
    EXPECT_EQ(ConnectionsAllowed(30), 30U);
    const rlimit fewer = {50, files.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &fewer), 0);
    EXPECT_EQ(ConnectionsAllowed(1024), 1U);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &files), 0);
}

// More than the memory for requests at a time: those that don't fit wait, and nobody is refused.
TEST_F(ServerLimit, TakesManyLargeRequestsOneAfterTheOther)
{
    acceptor.script = [](TcpSocket& socket)
    { ScriptedAcceptor::SendAll(socket, std::to_string(ScriptedAcceptor::ReadAll(socket).size())); };
    Start();
    const std::string request = Post(std::string(4'000'000, 'x'));
    std::vector<Client> clients;
    std::vector<std::thread> senders;
    for (int i = 0; i < 40; ++i)
        clients.emplace_back(url);
    for (const Client& client : clients)
        senders.emplace_back([&client, &request] { client.Send(request); });
    for (std::thread& sender : senders)
        sender.join();
    for (const Client& client : clients)
        EXPECT_THAT(client.ReadAll(), testing::StartsWith("40000"));
}

// Nobody is told to be too slow who waits for the memory of others.
TEST_F(ServerLimit, StopsTheClockOfARequestThatWaitsForMemory)
{
    constexpr std::size_t kHolding = 9; // the last of them goes beyond the budget
    Gate gate;
    acceptor.script = [&gate](TcpSocket& socket)
    {
        gate.Wait();
        ScriptedAcceptor::SendAll(socket, std::to_string(ScriptedAcceptor::ReadAll(socket).size()));
    };
    limits.requestTime = std::chrono::seconds(5);
    limits.workers = 1;
    Start();
    const std::string request = Post(std::string(4'000'000, 'x'));
    std::vector<Client> clients;
    for (std::size_t before = 0; before < kHolding; ++before)
    {
        clients.emplace_back(url);
        clients.back().Send(request);
        // Whole before the next begins: two that are read at once may keep each other from the last of the
        // memory.
        EXPECT_TRUE(Eventually([this, before] { return server->WaitingRequests() == before; }));
    }
    EXPECT_TRUE(Eventually([this] { return server->Waiting() == 1; })); // the listener
    clients.emplace_back(url);
    std::thread sender([&clients, &request] { clients.back().Send(request); });
    EXPECT_TRUE(Eventually([this] { return server->Waiting() == 2; }));
    std::this_thread::sleep_for(limits.requestTime + std::chrono::seconds(1));
    EXPECT_EQ(acceptor.served, acceptor.running);
    gate.Open();
    sender.join();
    for (const Client& client : clients)
        EXPECT_THAT(client.ReadAll(), testing::StartsWith("40000"));
}

// The large requests of hostile clients use all memory up and stay; small requests don't need any.
TEST_F(ServerLimit, AnswersSmallRequestsWhileLargeOnesStall)
{
    Start();
    const std::string part = Post(std::string(4'000'000, 'x')).substr(0, 3'900'000);
    std::vector<Client> hostile;
    std::vector<std::thread> senders;
    for (int i = 0; i < 30; ++i)
        hostile.emplace_back(url);
    for (const Client& client : hostile)
        senders.emplace_back([&client, &part] { client.Send(part); });
    for (int i = 0; i < 20; ++i)
        EXPECT_THAT(Ask(), EndsWith("body"));
    server->Stop();
    for (std::thread& sender : senders)
        sender.join();
    EXPECT_EQ(acceptor.served, 20);
}

// Answers that nobody reads may not fill the memory: the oldest of them is given up.
TEST_F(ServerLimit, DropsTheOldestOfTooManyUnreadAnswers)
{
    const std::string large(30 * 1024 * 1024, 'x');
    acceptor.script = [&large](TcpSocket& socket) { ScriptedAcceptor::SendAll(socket, large); };
    options.bufferBytes = 65536;
    Start();
    std::vector<Client> clients;
    for (int i = 1; i <= 5; ++i)
    {
        clients.emplace_back();
        clients.back().ReceiveBuffer(4096);
        clients.back().Connect(url);
        clients.back().Send(Post("body"));
        EXPECT_EQ(clients.back().ReadSome(1).size(), 1U);
    }
    EXPECT_LT(clients.front().ReadAll().size(), large.size() - 1);
    EXPECT_EQ(clients.back().ReadAll().size(), large.size() - 1);
}

} // namespace
} // namespace tarno::osa

// What the server calls instead of the system's, which it passes on to.
extern "C" int accept4(int listener, sockaddr* address, socklen_t* size, int /*flags*/)
{
    if (tarno::osa::gNoDescriptors)
    {
        ++tarno::osa::gVainAccepts;
        errno = EMFILE;
        return -1;
    }
    const int connection = accept(listener, address, size);
    if (connection >= 0)
    {
        fcntl(connection, F_SETFD, FD_CLOEXEC);
        fcntl(connection, F_SETFL, O_NONBLOCK);
    }
    return connection;
}
