#include "threads/Ticker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

using analytics::platform::Ticker;
using namespace std::chrono_literals;

TEST(TickerTest, CallsAgainAndAgain)
{
    std::atomic<int> count = 0;
    std::promise<void> third;
    const Ticker ticker(1ms,
                        [&]
                        {
                            if (++count == 3)
                                third.set_value();
                        });
    third.get_future().wait();
    EXPECT_GE(count, 3);
}

TEST(TickerTest, EndsWithoutItsInterval)
{
    std::atomic<int> count = 0;
    {
        const Ticker ticker(24h, [&] { ++count; });
    }
    EXPECT_EQ(count, 0);
}
