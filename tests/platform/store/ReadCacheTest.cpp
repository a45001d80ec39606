// Readings that are used again for as long as they are true.

#include "store/ProfileStore.h"

#include <analytics/Faults.h>

#include "platform/PlatformTest.h"
#include "store/StoreConnection.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

using analytics::platform::Query;
using analytics::platform::ReadCache;
using analytics::platform::Store;
using analytics::platform::StoreConnection;
using testing::ElementsAre;
using testing::IsEmpty;

class ReadCacheTest : public PlatformTest
{
  protected:
    using Names = std::vector<std::string>;

    Names Get(int key = 0)
    {
        const auto read = [this](StoreConnection& connection)
        {
            ++readings;
            Names names;
            Query row(connection, "SELECT name FROM profile ORDER BY id");
            while (row.Next())
                names.push_back(row.Text(0));
            return names;
        };
        const auto size = [](const Names& names) { return names.size() * 1000; };
        return *cache.Get(
            key, [&] { return store.Get(read); }, size);
    }
    void Insert(const std::string& name)
    {
        store.Write([&name](StoreConnection& connection)
                    { Query(connection, "INSERT INTO profile (name) VALUES (?)", name).Run(); });
    }

    Store store{Path("state")};
    ReadCache<Names> cache{store};
    std::atomic<int> readings = 0;
};

TEST_F(ReadCacheTest, AChangeShowsInTheNextReading)
{
    EXPECT_THAT(Get(), IsEmpty());
    Insert("a");
    EXPECT_THAT(Get(), ElementsAre("a"));
    Insert("b");
    EXPECT_THAT(Get(), ElementsAre("a", "b"));
    EXPECT_EQ(readings, 3);
}

TEST_F(ReadCacheTest, WhatIsTrueIsNotReadAgain)
{
    Insert("a");
    for (int gets = 0; gets < 100; ++gets)
        EXPECT_THAT(Get(gets % 4), ElementsAre("a"));
    EXPECT_EQ(readings, 4);
}

TEST_F(ReadCacheTest, ThoseThatWereUsedLastStay)
{
    constexpr int kMost = static_cast<int>(ReadCache<Names>::kMost);
    for (int key = 0; key < kMost; ++key)
        Get(key);
    Get(0);
    Get(kMost); // in the place of 1
    readings = 0;
    Get(0);
    EXPECT_EQ(readings, 0);
    Get(1);
    EXPECT_EQ(readings, 1);
}

TEST_F(ReadCacheTest, AReplacedDatabaseShows)
{
    Insert("a");
    EXPECT_THAT(Get(), ElementsAre("a"));
    std::filesystem::rename(Path("state/profiles.db"), Path("away"));
    EXPECT_THAT(Get(), IsEmpty());
}

TEST_F(ReadCacheTest, ADatabaseThatCannotBeReadIsSaidAllTheSame)
{
    EXPECT_THAT(Get(), IsEmpty());
    std::filesystem::remove_all(Path("state"));
    Write("state", "no folder");
    EXPECT_THROW(Get(), analytics::AnalyticsFault);
}

TEST_F(ReadCacheTest, WhatIsTooLargeIsReadEachTime)
{
    constexpr std::size_t kMany = ReadCache<Names>::kMostBytes / 1000 + 1;
    store.Write(
        [](StoreConnection& connection)
        {
            for (std::size_t i = 0; i < kMany; ++i)
                Query(connection, "INSERT INTO profile (name) VALUES ('long')").Run();
        });
    EXPECT_EQ(Get().size(), kMany);
    EXPECT_EQ(Get().size(), kMany);
    EXPECT_EQ(readings, 2);
}

// Changes of several threads share transactions, and each shows to whoever made it when it is acknowledged.
TEST_F(ReadCacheTest, EveryThreadSeesItsOwnChange)
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
