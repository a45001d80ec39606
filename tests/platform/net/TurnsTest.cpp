// Which thread of a server does what next.

#include "net/Turns.h"
#include "net/MemorySocket.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

namespace tarno::osa
{
namespace
{

using Task = Turns::Task;
using Way = Turns::Way;

class TurnsTest : public testing::Test
{
  protected:
    Task Next(Turns& turns) { return turns.Next(taken); }
    // So many requests are being served, each on a connection of its own.
    void Fill(Turns& turns, std::size_t served)
    {
        for (std::size_t i = 0; i < served; ++i)
        {
            ASSERT_EQ(Next(turns), Task::Accept);
            ASSERT_EQ(turns.Accepted(true), Way::AtOnce);
        }
    }
    static std::shared_ptr<Exchange> Request()
    {
        return std::make_shared<Exchange>("", [](std::string) {});
    }

    std::shared_ptr<Exchange> taken;
    Turns open{100};
};

TEST_F(TurnsTest, ServesWhereItAcceptsWhileThereIsRoom)
{
    open.BeginAccepting();
    Fill(open, Turns::kServing);
    ASSERT_EQ(Next(open), Task::Accept);
    EXPECT_EQ(open.Accepted(true), Way::Loop);
    open.Served();
    ASSERT_EQ(Next(open), Task::Accept);
    EXPECT_EQ(open.Accepted(true), Way::AtOnce);
}

TEST_F(TurnsTest, LeavesEverythingToTheLoopIfToldSo)
{
    open.BeginAccepting();
    ASSERT_EQ(Next(open), Task::Accept);
    EXPECT_EQ(open.Accepted(false), Way::Loop);
}

TEST_F(TurnsTest, RequestsThatWaitComeFirst)
{
    open.BeginAccepting();
    ASSERT_EQ(Next(open), Task::Accept);
    const auto request = Request();
    open.Add(request);
    EXPECT_EQ(open.Accepted(true), Way::AtOnce); // and doesn't have to wait as well
    ASSERT_EQ(Next(open), Task::Serve);
    EXPECT_EQ(taken, request);
    EXPECT_EQ(Next(open), Task::Accept);
}

TEST_F(TurnsTest, CallsFirstWhoWaitedLeast)
{
    std::shared_ptr<Exchange> exchanges[2];
    std::future<Task> waiting[2];
    for (std::size_t i = 0; i < 2; ++i)
    {
        waiting[i] =
            std::async(std::launch::async, [this, &exchanges, i] { return open.Next(exchanges[i]); });
        while (open.Waiting() == i)
            std::this_thread::yield();
    }
    open.Add(Request());
    EXPECT_EQ(open.Waiting(), 1U);
    open.Stop(); // whoever was called serves all the same
    EXPECT_EQ(waiting[1].get(), Task::Serve);
    EXPECT_EQ(waiting[0].get(), Task::End);
}

TEST_F(TurnsTest, SomebodyAcceptsHoweverManyAreServed)
{
    open.BeginAccepting();
    Fill(open, Turns::kServing);
    open.Add(Request());
    ASSERT_EQ(Next(open), Task::Accept); // and the request waits
    EXPECT_EQ(open.Accepted(true), Way::Loop);
    open.Served();
    EXPECT_EQ(Next(open), Task::Serve);
}

TEST_F(TurnsTest, AcceptsOnlyAsManyConnectionsAsAreAllowed)
{
    Turns two{2};
    two.BeginAccepting();
    Fill(two, 2);
    auto third = std::async(std::launch::async, [this, &two] { return Next(two); });
    EXPECT_EQ(third.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    two.ConnectionEnded();
    EXPECT_EQ(third.get(), Task::Accept);
}

TEST_F(TurnsTest, AFewAcceptAndTheOthersWaitForOneOfThemToBeBusy)
{
    open.BeginAccepting();
    for (std::size_t i = 0; i < Turns::kAccepting; ++i)
        ASSERT_EQ(Next(open), Task::Accept);
    auto other = std::async(std::launch::async, [this] { return Next(open); });
    while (open.Waiting() == 0)
        std::this_thread::yield();
    for (std::size_t i = 0; i + 1 < Turns::kAccepting; ++i)
        open.Accepted(true);
    EXPECT_EQ(other.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    open.Accepted(true);
    EXPECT_EQ(other.get(), Task::Accept);
}

TEST_F(TurnsTest, WaitsForABetterTimeOnOneThreadOnly)
{
    open.BeginAccepting();
    ASSERT_EQ(Next(open), Task::Accept);
    ASSERT_EQ(Next(open), Task::Accept);
    const auto begin = std::chrono::steady_clock::now();
    std::thread first([this] { open.NotAccepted(true); });
    open.NotAccepted(true);
    first.join();
    EXPECT_EQ(Next(open), Task::Accept);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, Turns::kBetterTime);
    EXPECT_TRUE(open.Idle());
}

TEST_F(TurnsTest, AcceptsNothingOnceThatHasEnded)
{
    open.BeginAccepting();
    ASSERT_EQ(Next(open), Task::Accept);
    open.EndAccepting();
    EXPECT_EQ(open.Accepted(true), Way::Close);
    EXPECT_FALSE(open.Idle());
    open.ConnectionEnded();
    EXPECT_TRUE(open.Idle());
}

TEST_F(TurnsTest, StopHandsOutWhatWaitsAndEndsAllThreads)
{
    std::atomic<int> served = 0;
    const auto run = [this, &served]
    {
        std::shared_ptr<Exchange> exchange;
        while (open.Next(exchange) == Task::Serve)
        {
            ++served;
            open.Served();
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 5; ++i)
        threads.emplace_back(run);
    for (int i = 0; i < 40; ++i)
        open.Add(Request());
    open.Stop();
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(served, 40);
    EXPECT_TRUE(open.Idle());
}

} // namespace
} // namespace tarno::osa
