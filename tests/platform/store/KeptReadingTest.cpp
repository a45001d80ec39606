// Readings that are used again for as long as they are true.

#include "store/KeptReading.h"

#include <analytics/Faults.h>

#include "platform/PlatformTest.h"
#include "store/StoreConnection.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

using analytics::platform::KeptReading;
using analytics::platform::Query;
using analytics::platform::Store;
using analytics::platform::StoreConnection;
using testing::ElementsAre;
using testing::IsEmpty;

class KeptReadingTest : public PlatformTest
{
  protected:
    using Names = std::vector<std::string>;

    Names Get()
    {
        return *kept.Get(store,
                         [this](StoreConnection& connection)
                         {
                             ++readings;
                             Names names;
                             Query row(connection, "SELECT name FROM profile ORDER BY id");
                             while (row.Next())
                                 names.push_back(row.Text(0));
                             return names;
                         });
    }
    void Insert(const std::string& name)
    {
        store.Write([&name](StoreConnection& connection)
                    { Query(connection, "INSERT INTO profile (name) VALUES (?)", name).Run(); });
    }

    Store store{Path("state")};
    KeptReading<Names> kept;
    std::atomic<int> readings = 0;
};

TEST_F(KeptReadingTest, AChangeShowsInTheNextReading)
{
    EXPECT_THAT(Get(), IsEmpty());
    Insert("a");
    EXPECT_THAT(Get(), ElementsAre("a"));
    Insert("b");
    EXPECT_THAT(Get(), ElementsAre("a", "b"));
    EXPECT_EQ(readings, 3);
}

TEST_F(KeptReadingTest, WhatIsTrueIsNotReadAgain)
{
    Insert("a");
    const auto begin = std::chrono::steady_clock::now();
    int gets = 0;
    for (; gets < 100; ++gets)
        EXPECT_THAT(Get(), ElementsAre("a"));
    const auto time = std::chrono::steady_clock::now() - begin;
    EXPECT_LE(readings, 1 + time / KeptReading<Names>::kMostAge);
}

TEST_F(KeptReadingTest, AReplacedDatabaseShows)
{
    Insert("a");
    EXPECT_THAT(Get(), ElementsAre("a"));
    std::filesystem::rename(Path("state/profiles.db"), Path("away"));
    EXPECT_THAT(Get(), IsEmpty());
}

TEST_F(KeptReadingTest, ADatabaseThatCannotBeReadIsSaidAllTheSame)
{
    EXPECT_THAT(Get(), IsEmpty());
    std::filesystem::remove_all(Path("state"));
    Write("state", "no folder");
    EXPECT_THROW(Get(), analytics::AnalyticsFault);
}

TEST_F(KeptReadingTest, LongListsAreReadEachTime)
{
    store.Write(
        [](StoreConnection& connection)
        {
            for (std::size_t i = 0; i <= KeptReading<Names>::kMost; ++i)
                Query(connection, "INSERT INTO profile (name) VALUES ('long')").Run();
        });
    EXPECT_EQ(Get().size(), KeptReading<Names>::kMost + 1);
    EXPECT_EQ(Get().size(), KeptReading<Names>::kMost + 1);
    EXPECT_EQ(readings, 2);
}

TEST_F(KeptReadingTest, WhatAnotherProgramWritesShowsAfterAWhile)
{
    EXPECT_THAT(Get(), IsEmpty());
    StoreConnection other(Path("state/profiles.db"), StoreConnection::Use::kWrite);
    Query(other, "INSERT INTO profile (name) VALUES ('other')").Run();
    for (int round = 0; round < 6000 && Get().empty(); ++round)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_THAT(Get(), ElementsAre("other"));
}

// Changes of several threads share transactions, and each shows to whoever made it when it is acknowledged.
TEST_F(KeptReadingTest, EveryThreadSeesItsOwnChange)
{
    std::atomic<int> unseen = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 6; ++i)
        threads.emplace_back(
            [&, i]
            {
                for (int round = 0; round < 20; ++round)
                {
                    const std::string name = std::to_string(i) + '/' + std::to_string(round);
                    Insert(name);
                    const Names names = Get();
                    unseen += std::ranges::find(names, name) == names.end() ? 1 : 0;
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(unseen, 0);
}
