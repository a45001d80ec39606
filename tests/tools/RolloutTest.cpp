#include "Rollout.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>

using namespace client;

namespace
{

std::atomic<int> gSignals;

// Counts the signals that nobody else takes; without it they end the process.
class RolloutSignalTest : public testing::Test
{
  protected:
    RolloutSignalTest()
    {
        gSignals = 0;
        struct sigaction action = {};
        action.sa_handler = [](int) { ++gSignals; };
        sigaction(SIGTERM, &action, &m_before);
    }
    ~RolloutSignalTest() override { sigaction(SIGTERM, &m_before, nullptr); }

    static HostResult Done(std::size_t)
    {
        HostResult result;
        result.state = HostState::Changed;
        return result;
    }
    static HostResult Failed(std::size_t)
    {
        HostResult result;
        result.state = HostState::Failed;
        result.error = "It failed.";
        return result;
    }
    static HostResult Left(std::size_t) { return {}; }

    // Of so many hosts in batches of one.
    static RolloutOptions OneByOne()
    {
        RolloutOptions options;
        options.jobs = 1;
        options.batch = Share{1, false};
        return options;
    }

  private:
    struct sigaction m_before = {};
};

// The signal comes with the end of the work, so that now and then nobody is at work when it is seen.
TEST_F(RolloutSignalTest, BetweenBatchesEndsItAndAllAreReported)
{
    for (int round = 0; round < 200; ++round)
    {
        Rollout rollout(4, OneByOne());
        std::vector<HostState> told;
        const auto report = [&told](const HostResult& result)
        {
            told.push_back(result.state);
            if (told.size() == 2)
                kill(getpid(), SIGTERM);
        };
        EXPECT_TRUE(rollout.Run(Done, Left, report));
        ASSERT_EQ(std::count(told.begin(), told.end(), HostState::Changed), 2) << "in round " << round;
        ASSERT_EQ(told.size(), 4U);
        EXPECT_EQ(rollout.Ended(), "It was interrupted.");
        EXPECT_EQ(gSignals, 0);
    }
}

TEST_F(RolloutSignalTest, IsSeenAfterTheLastBatch)
{
    for (int round = 0; round < 200; ++round)
    {
        Rollout rollout(1, OneByOne());
        rollout.Run(Done, Left, [](const HostResult&) { kill(getpid(), SIGTERM); });
        ASSERT_EQ(rollout.Ended(), "It was interrupted.") << "in round " << round;
        EXPECT_EQ(gSignals, 0);
    }
}

TEST_F(RolloutSignalTest, WaitsUntilThoseLeftOverAreReported)
{
    Rollout rollout(3, OneByOne());
    std::size_t told = 0;
    const auto report = [&told](const HostResult&)
    {
        EXPECT_EQ(gSignals, 0);
        if (++told == 2)
            kill(getpid(), SIGTERM);
    };
    rollout.Run(Failed, Left, report);
    EXPECT_EQ(told, 3U);
    EXPECT_EQ(gSignals, 1);
}

} // namespace
