// Of all connections to a database one writes and brings its log in: SQLite 3.7.0 to 3.51.2 can lose
// committed pages otherwise.

#include "platform/store/FaultyFiles.h"
#include "platform/store/StoreFixture.h"
#include "store/StoreConnection.h"

#include <sqlite3.h>

#include <atomic>
#include <thread>
#include <vector>

using analytics::platform::StoreConnection;

class OneWriterTest : public StoreFixture
{
  protected:
    OneWriterTest()
    {
        m_manager.reset();
        faulty::Install();
        Open();
    }
};

TEST_F(OneWriterTest, ReadersCopiesAndReopeningBringNoSecondOne)
{
    const std::string document(20'000, 'x');
    for (int id = 1; id <= 4; ++id)
        Create();
    std::atomic<bool> ended = false;
    std::vector<std::thread> threads;
    for (int id = 1; id <= 4; ++id)
        threads.emplace_back(
            [&, id]
            {
                for (int i = 0; i < 60; ++i)
                    m_manager->SetRuleConfig(id, "r" + std::to_string(i % 8), document, false);
            });
    threads.emplace_back(
        [&]
        {
            while (!ended)
            {
                RuleConfig(1, "r1");
                List();
            }
        });
    threads.emplace_back(
        [&]
        {
            for (int i = 0; i < 20; ++i)
                analytics::platform::BackUpStore(Path("state"), Path("copy" + std::to_string(i)));
        });
    for (std::size_t i = 0; i < 4; ++i)
        threads[i].join();
    ended = true;
    threads[4].join();
    threads[5].join();
    EXPECT_GT(faulty::Checkpoints(), 0);
    std::filesystem::rename(Path("state/profiles.db"), Path("away"));
    EXPECT_EQ(Create(), 1);
    Reopen();
    EXPECT_EQ(List().size(), 1u);
}

TEST_F(OneWriterTest, AReadingConnectionWritesNothing)
{
    Create();
    StoreConnection reader(Path("state/profiles.db"), StoreConnection::Use::Read);
    EXPECT_EQ(reader.Database().execAndGet("PRAGMA wal_autocheckpoint").getInt(), 0);
    EXPECT_THROW(reader.Database().exec("DELETE FROM profile"), SQLite::Exception);
    int closing = 0;
    ASSERT_EQ(
        sqlite3_db_config(reader.Database().getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, -1, &closing),
        SQLITE_OK);
    EXPECT_EQ(closing, 1);
}

TEST_F(OneWriterTest, ASecondOneIsFound)
{
    Create();
    EXPECT_DEATH(StoreConnection(Path("state/profiles.db"), StoreConnection::Use::Write)
                     .Database()
                     .exec("DELETE FROM profile"),
                 "a second connection writes");
}
