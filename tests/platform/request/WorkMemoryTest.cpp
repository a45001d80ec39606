#include "request/WorkMemory.h"

#include <analytics/Faults.h>

#include "platform/PlatformTest.h"

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

using analytics::platform::Event;
using analytics::platform::RequestScope;
using analytics::platform::WorkMemory;

namespace
{
constexpr std::size_t kLarge = 10 * WorkMemory::kSmall;

void WaitFor(WorkMemory& memory, std::size_t waiting)
{
    while (memory.Waiting() != waiting)
        std::this_thread::yield();
}
} // namespace

class WorkMemoryTest : public testing::Test
{
  protected:
    // Raises a claim on a thread of its own, notes its number when it is there, and gives it back.
    void Start(int number, std::size_t bytes)
    {
        threads.emplace_back(
            [this, number, bytes]
            {
                WorkMemory::Claim claim(memory);
                claim.Raise(bytes);
                most = std::max(most.load(), memory.Used());
                order.push_back(number);
            });
    }
    void Join()
    {
        for (std::thread& thread : threads)
            thread.join();
    }

    WorkMemory memory{kLarge + WorkMemory::kSmall, WorkMemory::kSmall, 4};
    std::vector<std::thread> threads;
    std::vector<int> order; // one thread at a time, since only one large claim fits
    std::atomic<std::size_t> most = 0;
};

TEST_F(WorkMemoryTest, LargeOnesWaitInTheOrderOfArrival)
{
    std::optional<WorkMemory::Claim> first(std::in_place, memory);
    first->Raise(kLarge);
    for (int i = 0; i < 4; ++i)
    {
        Start(i, kLarge - static_cast<std::size_t>(i) * WorkMemory::kSmall);
        WaitFor(memory, static_cast<std::size_t>(i) + 1);
    }
    first.reset();
    Join();
    EXPECT_EQ(order, (std::vector{0, 1, 2, 3}));
    EXPECT_LE(most, kLarge);
    EXPECT_EQ(memory.Used(), 0u);
}

TEST_F(WorkMemoryTest, SmallOnesPassThoseThatWait)
{
    std::optional<WorkMemory::Claim> first(std::in_place, memory);
    first->Raise(kLarge);
    Start(1, kLarge);
    WaitFor(memory, 1);
    WorkMemory::Claim small(memory);
    small.Raise(WorkMemory::kSmall);
    EXPECT_EQ(memory.Used(), kLarge + WorkMemory::kSmall);
    first.reset();
    Join();
    EXPECT_EQ(memory.Used(), WorkMemory::kSmall);
}

TEST_F(WorkMemoryTest, TooManyAreRefusedAndHoldNothing)
{
    std::optional<WorkMemory::Claim> first(std::in_place, memory);
    first->Raise(kLarge);
    for (int i = 0; i < 4; ++i)
        Start(i, kLarge);
    WaitFor(memory, 4);
    WorkMemory::Claim fifth(memory);
    EXPECT_EQ(FaultOf<analytics::AnalyticsFault>([&] { fifth.Raise(kLarge); }),
              "The service is busy with other large documents; try again later");
    EXPECT_EQ(memory.Used(), kLarge);
    first.reset();
    Join();
}

TEST_F(WorkMemoryTest, AClaimThatGrowsGivesBackWhatItHasBeforeItWaits)
{
    for (int i = 0; i < 2; ++i)
        threads.emplace_back(
            [this]
            {
                for (int round = 0; round < 100; ++round)
                {
                    WorkMemory::Claim claim(memory);
                    claim.Raise(kLarge / 2);
                    claim.Raise(kLarge);
                }
            });
    Join();
    EXPECT_EQ(memory.Used(), 0u);
}

TEST_F(WorkMemoryTest, MoreThanThereIsTakesAllThatThereIsForOne)
{
    WorkMemory::Claim claim(memory);
    claim.Raise(100 * kLarge);
    EXPECT_EQ(memory.Used(), kLarge);
    claim.Raise(1);
    EXPECT_EQ(memory.Used(), kLarge);
}

TEST_F(WorkMemoryTest, TellsWhenAThreadBeginsAndEndsToWait)
{
    static std::atomic<int> waiting = 0;
    static std::atomic<int> calls = 0;
    Event::OnWaiting(
        [](bool begins)
        {
            waiting += begins ? 1 : -1;
            ++calls;
        });
    {
        WorkMemory::Claim claim(memory);
        claim.Raise(kLarge);
        EXPECT_EQ(calls, 0);
        Start(1, kLarge);
        while (waiting == 0)
            std::this_thread::yield();
    }
    Join();
    Event::OnWaiting(nullptr);
    EXPECT_EQ(waiting, 0);
    EXPECT_EQ(calls, 2);
}

using RequestClaimTest = PlatformTest;

TEST_F(RequestClaimTest, EndsWithTheRequest)
{
    WorkMemory& memory = analytics::platform::WorkOfProcess();
    analytics::platform::ClaimForStored(1000);
    EXPECT_EQ(memory.Used(), 0u);
    for (int i = 0; i < 2; ++i)
    {
        const RequestScope request;
        analytics::platform::ClaimForReceived(100);
        const std::size_t received = memory.Used();
        EXPECT_GE(received, 100u);
        analytics::platform::ClaimForStored(1'000'000);
        EXPECT_GE(memory.Used(), 1'000'000u);
        analytics::platform::ClaimForReceived(100);
        EXPECT_GE(memory.Used(), 1'000'000u);
    }
    EXPECT_EQ(memory.Used(), 0u);
}
