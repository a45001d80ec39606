#include "files/StandardError.h"

#include "platform/PlatformTest.h"

using analytics::platform::Outage;
using namespace std::chrono_literals;

namespace
{
const Outage::Clock::time_point kBegin(1000s);
}

TEST(OutageTest, BeginAndEndAreSaidOnce)
{
    Outage outage;
    EXPECT_EQ(ErrorsOf([&] { outage.End("again"); }), "");
    EXPECT_EQ(ErrorsOf(
                  [&]
                  {
                      outage.Begin("broken", kBegin);
                      outage.Begin("broken", kBegin + 60s);
                  }),
              "broken\n");
    EXPECT_EQ(ErrorsOf(
                  [&]
                  {
                      outage.End("again");
                      outage.End("again");
                  }),
              "again\n");
}

TEST(OutageTest, WhatBreaksAgainAndAgainIsSaidOnceInTenSeconds)
{
    Outage outage;
    const std::string errors = ErrorsOf(
        [&]
        {
            for (int second = 0; second < 10; ++second)
            {
                outage.Begin("broken", kBegin + std::chrono::seconds(second));
                outage.End("again");
            }
        });
    EXPECT_EQ(errors, "broken\nagain\n");
    EXPECT_EQ(ErrorsOf([&] { outage.Begin("broken", kBegin + 10s); }), "broken\n");
}

TEST(OutageTest, OneThatLastsIsSaidAfterTheQuietTime)
{
    Outage outage;
    ErrorsOf(
        [&]
        {
            outage.Begin("broken", kBegin);
            outage.End("again");
        });
    EXPECT_EQ(ErrorsOf([&] { outage.Begin("broken", kBegin + 5s); }), "");
    EXPECT_EQ(ErrorsOf([&] { outage.Begin("broken", kBegin + 11s); }), "broken\n");
}
