#include "store/Store.h"

#include <analytics/Faults.h>

#include "platform/PlatformTest.h"
#include "store/StoreConnection.h"

#include <gmock/gmock.h>

#include <future>
#include <sys/stat.h>
#include <thread>

using analytics::AnalyticsFault;
using analytics::platform::Query;
using analytics::platform::Store;
using analytics::platform::StoreConnection;
using testing::HasSubstr;

class StoreTest : public PlatformTest
{
  protected:
    static int Count(Store& store)
    {
        int count = -1;
        store.Read(
            [&](StoreConnection& connection)
            {
                Query row(connection, "SELECT count(*) FROM profile");
                count = row.Next() ? row.Number(0) : -1;
            });
        return count;
    }
    static void Insert(StoreConnection& connection, const std::string& name)
    {
        Query(connection, "INSERT INTO profile (name) VALUES (?)", name).Run();
    }
    int Mode(const std::string& name) const
    {
        struct stat status = {};
        return stat(Path(name).c_str(), &status) == 0 ? static_cast<int>(status.st_mode & 0777) : -1;
    }
    std::uint64_t Inode(const std::string& name) const
    {
        return analytics::platform::IdentityOf(Path(name)).inode;
    }
};

TEST_F(StoreTest, MakesTheFolderWithTheOnesAboveForItsOwnerOnly)
{
    Store store(Path("a/b/c/"));
    EXPECT_EQ(Mode("a/b/c"), 0700);
    EXPECT_TRUE(std::filesystem::exists(Path("a/b/c/profiles.db")));
}

TEST_F(StoreTest, LeavesTheModeOfAFolderThatIsThere)
{
    std::filesystem::create_directory(Path("state"));
    std::filesystem::permissions(Path("state"), std::filesystem::perms(0750));
    Store store(Path("state"));
    EXPECT_EQ(Mode("state"), 0750);
}

TEST_F(StoreTest, SaysWhyTheFolderCannotBeMade)
{
    Write("file", "");
    EXPECT_EQ(FaultOf<AnalyticsFault>([this] { Store store(Path("file/state")); }),
              "The state folder " + Path("file") +
                  " can't be used: it isn't a folder; choose another state folder");
    EXPECT_EQ(FaultOf<AnalyticsFault>([this] { Store store(Path("file")); }),
              "The state folder " + Path("file") +
                  " can't be used: it isn't a folder; choose another state folder");
}

TEST_F(StoreTest, AReaderDoesNotWaitForAWriterAndSeesOnlyWhatIsCommitted)
{
    Store store(Path("state"));
    std::promise<void> inside;
    std::promise<void> leave;
    std::thread writer(
        [&]
        {
            store.Write(
                [&](StoreConnection& connection)
                {
                    Insert(connection, "a");
                    inside.set_value();
                    leave.get_future().wait();
                });
        });
    inside.get_future().wait();
    EXPECT_EQ(Count(store), 0);
    leave.set_value();
    writer.join();
    EXPECT_EQ(Count(store), 1);
}

TEST_F(StoreTest, WhatAnOperationThrowsTakesItsChangesBack)
{
    Store store(Path("state"));
    EXPECT_THROW(store.Write(
                     [&](StoreConnection& connection)
                     {
                         Insert(connection, "a");
                         throw analytics::ClientFault("no");
                     }),
                 analytics::ClientFault);
    EXPECT_EQ(Count(store), 0);
    const std::string fault = FaultOf<AnalyticsFault>(
        [&]
        {
            store.Write(
                [&](StoreConnection& connection)
                {
                    Insert(connection, "a");
                    Query(connection, "INSERT INTO missing VALUES (1)").Run();
                });
        });
    EXPECT_THAT(fault, HasSubstr("no such table"));
    EXPECT_EQ(Count(store), 0);
    store.Write([&](StoreConnection& connection) { Insert(connection, "a"); });
    EXPECT_EQ(Count(store), 1);
}

TEST_F(StoreTest, KeepsItsConnectionsFromOneOperationToTheNext)
{
    Store store(Path("state"));
    const auto log = Inode("state/profiles.db-wal");
    EXPECT_NE(log, 0u);
    for (int i = 0; i < 5; ++i)
    {
        store.Write([&](StoreConnection& connection) { Insert(connection, "a"); });
        EXPECT_EQ(Count(store), i + 1);
    }
    EXPECT_EQ(Inode("state/profiles.db-wal"), log);
}

TEST_F(StoreTest, ARequestLooksAtTheFilesOnceAndBeforeEachChange)
{
    using analytics::platform::RequestScope;
    Store store(Path("state"));
    const Store::Operation insert = [](StoreConnection& connection) { Insert(connection, "a"); };
    const auto moveAway = [this](const std::string& name)
    { std::filesystem::rename(Path("state/profiles.db"), Path(name)); };
    store.Write(insert);
    store.Write(insert);
    {
        const RequestScope request;
        EXPECT_EQ(Count(store), 2);
        moveAway("first");
        EXPECT_EQ(Count(store), 2);
        store.Write(insert); // into the new file
        EXPECT_EQ(Count(store), 1);
        moveAway("second");
    }
    const RequestScope request;
    EXPECT_EQ(Count(store), 0);
}

TEST_F(StoreTest, ARequestThatHasSeenOneStoreLooksAtTheOther)
{
    Store one(Path("one"));
    Store other(Path("other"));
    const analytics::platform::RequestScope request;
    EXPECT_EQ(Count(one), 0);
    one.Write([](StoreConnection& connection) { Insert(connection, "a"); });
    std::filesystem::rename(Path("one/profiles.db"), Path("away"));
    EXPECT_EQ(Count(other), 0);
    EXPECT_EQ(Count(one), 0);
}

TEST_F(StoreTest, WritesDurablyWithReferences)
{
    Store store(Path("state"));
    const auto pragma = [](StoreConnection& connection, const std::string& name)
    { return connection.Database().execAndGet("PRAGMA " + name).getString(); };
    store.Read(
        [&](StoreConnection& connection)
        {
            EXPECT_EQ(pragma(connection, "journal_mode"), "wal");
            EXPECT_EQ(pragma(connection, "query_only"), "1");
        });
    store.Write(
        [&](StoreConnection& connection)
        {
            EXPECT_EQ(pragma(connection, "synchronous"), "2");
            EXPECT_EQ(pragma(connection, "foreign_keys"), "1");
            EXPECT_EQ(pragma(connection, "user_version"), "2");
        });
}

TEST_F(StoreTest, RefusesAStoreOfANewerService)
{
    Store(Path("state"))
        .Write([](StoreConnection& connection) { connection.Database().exec("PRAGMA user_version = 3"); });
    EXPECT_EQ(FaultOf<AnalyticsFault>([this] { Store store(Path("state")); }),
              "The profile store " + Path("state/profiles.db") +
                  " was written by a newer version of this service; run that version, or choose another "
                  "state folder");
}

TEST_F(StoreTest, RunsOutOfIdentifiersWithASentence)
{
    Store store(Path("state"));
    store.Write(
        [&](StoreConnection& connection)
        { connection.Database().exec("INSERT INTO profile (id, name) VALUES (2147483647, 'last')"); });
    EXPECT_THAT(FaultOf<AnalyticsFault>(
                    [&] { store.Write([&](StoreConnection& connection) { Insert(connection, "a"); }); }),
                HasSubstr("the identifiers are used up"));
    EXPECT_EQ(Count(store), 1);
}
