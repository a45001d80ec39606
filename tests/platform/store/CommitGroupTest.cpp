#include "store/CommitGroup.h"

#include <analytics/Faults.h>

#include "platform/PlatformTest.h"
#include "store/Store.h"
#include "store/StoreConnection.h"

#include <gmock/gmock.h>

#include <sqlite3.h>

#include <future>
#include <thread>

using analytics::platform::CommitGroup;
using analytics::platform::Query;
using analytics::platform::Store;
using analytics::platform::StoreConnection;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

namespace
{
void Nothing(StoreConnection& /*connection*/) {}
const CommitGroup::Operation kNothing = Nothing;
constexpr const char* kNoFault = "(no fault)";
} // namespace

TEST(CommitGroup, OneThatComesAloneLeadsAtOnceAndAlone)
{
    CommitGroup group;
    for (int i = 0; i < 2; ++i)
    {
        CommitGroup::Member member{kNothing};
        const CommitGroup::Turn turn(group, member);
        EXPECT_THAT(turn.Members(), ElementsAre(&member));
    }
}

TEST(CommitGroup, ThoseThatComeMeanwhileAreServedTogetherByTheFirstOfThem)
{
    constexpr std::size_t kOthers = 5;
    CommitGroup group;
    CommitGroup::Member first{kNothing};
    auto turn = std::make_unique<CommitGroup::Turn>(group, first);
    std::vector<std::size_t> led(kOthers);
    std::vector<int> committed(kOthers);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kOthers; ++i)
    {
        threads.emplace_back(
            [&, i]
            {
                CommitGroup::Member member{kNothing};
                {
                    const CommitGroup::Turn mine(group, member);
                    led[i] = mine.Members().size();
                    for (CommitGroup::Member* const served : mine.Members())
                        served->committed = true;
                }
                committed[i] = member.committed ? 1 : 0;
            });
        while (group.Waiting() <= i)
            std::this_thread::yield();
    }
    turn.reset();
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(led, ElementsAre(kOthers, 0, 0, 0, 0));
    EXPECT_THAT(committed, testing::Each(1));
    EXPECT_FALSE(first.committed);
}

// Without a wait in between, so that groups end while others come.
TEST(CommitGroup, EachIsServedOnceHoweverTheyMeet)
{
    constexpr int kThreads = 8;
    constexpr int kChanges = 200;
    CommitGroup group;
    int served = 0; // by the one that leads, and so by one at a time
    std::vector<int> own(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back(
            [&, i]
            {
                for (int change = 0; change < kChanges; ++change)
                {
                    CommitGroup::Member member{kNothing};
                    {
                        const CommitGroup::Turn turn(group, member);
                        for (CommitGroup::Member* const other : turn.Members())
                        {
                            EXPECT_FALSE(other->committed);
                            other->committed = true;
                            ++served;
                        }
                    }
                    own[static_cast<std::size_t>(i)] += member.committed ? 1 : 0;
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(served, kThreads * kChanges);
    EXPECT_THAT(own, testing::Each(kChanges));
    EXPECT_EQ(group.Waiting(), 0u);
}

// ---- In the store ----

// Several changes that wait while another one is being written, and so share a transaction.
class SharedTransactionTest : public PlatformTest
{
  protected:
    using Operation = Store::Operation;

    // What each change ended with.
    std::vector<std::string> WriteTogether(const std::vector<Operation>& operations)
    {
        std::promise<void> leave;
        std::promise<void> inside;
        std::thread before(
            [&]
            {
                m_store.Write(
                    [&](StoreConnection&)
                    {
                        inside.set_value();
                        leave.get_future().wait();
                    });
            });
        inside.get_future().wait();
        std::vector<std::string> faults(operations.size());
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < operations.size(); ++i)
        {
            threads.emplace_back(
                [&, i] { faults[i] = FaultOf<std::exception>([&] { m_store.Write(operations[i]); }); });
            while (m_store.Waiting() <= i)
                std::this_thread::yield();
        }
        leave.set_value();
        before.join();
        for (std::thread& thread : threads)
            thread.join();
        return faults;
    }

    static Operation Insert(const std::string& name)
    {
        return [name](StoreConnection& connection)
        { Query(connection, "INSERT INTO profile (name) VALUES (?)", name).Run(); };
    }
    // The same, and then it fails.
    static Operation InsertAnd(const std::string& name, const Operation& then)
    {
        return [=](StoreConnection& connection)
        {
            Insert(name)(connection);
            then(connection);
        };
    }
    std::vector<std::string> Names()
    {
        std::vector<std::string> names;
        m_store.Read(
            [&](StoreConnection& connection)
            {
                Query row(connection, "SELECT name FROM profile");
                while (row.Next())
                    names.push_back(row.Text(0));
            });
        return names;
    }

    Store m_store{Path("state")};
};

TEST_F(SharedTransactionTest, AllAreStoredInTheOrderInWhichTheyCame)
{
    EXPECT_THAT(WriteTogether({Insert("a"), Insert("b"), Insert("c")}), testing::Each(kNoFault));
    EXPECT_THAT(Names(), ElementsAre("a", "b", "c"));
}

TEST_F(SharedTransactionTest, RunsOnOneThreadAndIsSeenByNoReaderBefore)
{
    std::vector<std::thread::id> ids;
    std::vector<std::string> seen = {"not asked"};
    const Operation note = [&](StoreConnection& connection)
    {
        Insert("a")(connection);
        ids.push_back(std::this_thread::get_id());
        seen = Names();
    };
    EXPECT_THAT(WriteTogether({note, note, note}), testing::Each(kNoFault));
    ASSERT_THAT(ids, SizeIs(3));
    EXPECT_THAT(ids, testing::Each(ids[0]));
    EXPECT_THAT(seen, IsEmpty());
    EXPECT_THAT(Names(), SizeIs(3));
}

TEST_F(SharedTransactionTest, OneThatThrowsTakesNoneOfTheOthersAlong)
{
    const Operation refuse = [](StoreConnection&) { throw analytics::ClientFault("no"); };
    const Operation fail = [](StoreConnection&) { throw std::runtime_error("not today"); };
    EXPECT_THAT(WriteTogether({Insert("a"), InsertAnd("b", refuse), Insert("c"), InsertAnd("d", fail)}),
                ElementsAre(kNoFault, "no", kNoFault, "not today"));
    EXPECT_THAT(Names(), ElementsAre("a", "c"));
}

TEST_F(SharedTransactionTest, OneThatTheDatabaseRefusesTakesNoneOfTheOthersAlong)
{
    const Operation wrong = [](StoreConnection& connection)
    { Query(connection, "INSERT INTO missing VALUES (1)").Run(); };
    const auto faults = WriteTogether({Insert("a"), InsertAnd("b", wrong), Insert("c")});
    EXPECT_THAT(faults, ElementsAre(kNoFault, HasSubstr("no such table"), kNoFault));
    EXPECT_THAT(Names(), UnorderedElementsAre("a", "c"));
}

TEST_F(SharedTransactionTest, OneThatEndsTheTransactionTakesNoneOfTheOthersAlong)
{
    const Operation rollBack = [](StoreConnection& connection)
    {
        connection.Database().exec("ROLLBACK");
        throw SQLite::Exception("the disk is full", SQLITE_FULL);
    };
    const auto faults = WriteTogether({Insert("a"), InsertAnd("b", rollBack), Insert("c")});
    EXPECT_THAT(faults, ElementsAre(kNoFault, HasSubstr("the disk is full"), kNoFault));
    EXPECT_THAT(Names(), UnorderedElementsAre("a", "c"));
}

TEST_F(SharedTransactionTest, WhatIsTooLargeForTheDiskLeavesRoomForTheOthers)
{
    const auto limitPages = [this](int pages)
    {
        m_store.Write([=](StoreConnection& connection)
                      { connection.Database().exec("PRAGMA max_page_count = " + std::to_string(pages)); });
    };
    limitPages(20);
    const auto faults = WriteTogether({Insert("a"), Insert(std::string(200'000, 'x')), Insert("c")});
    EXPECT_THAT(faults, ElementsAre(kNoFault, HasSubstr("the disk is full"), kNoFault));
    EXPECT_THAT(Names(), UnorderedElementsAre("a", "c"));
    limitPages(1'000'000);
    EXPECT_THAT(WriteTogether({Insert("d"), Insert(std::string(200'000, 'x'))}), testing::Each(kNoFault));
    EXPECT_THAT(Names(), SizeIs(4));
}
