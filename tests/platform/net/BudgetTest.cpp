#include "net/Budget.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tarno::osa
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

class BudgetTest : public testing::Test
{
  protected:
    auto Note(int number)
    {
        return [this, number] { calls.push_back(number); };
    }

    Budget budget{100};
    std::vector<int> calls;
};

TEST_F(BudgetTest, CountsWhatIsHeldAndGivesItBack)
{
    {
        Budget::Share share(budget);
        EXPECT_TRUE(share.Ask(60, Note(1)));
        EXPECT_TRUE(share.Ask(80, Note(1)));
        EXPECT_EQ(budget.Used(), 80U);
        EXPECT_TRUE(share.Ask(10, Note(1)));
        EXPECT_EQ(budget.Used(), 80U);
    }
    EXPECT_EQ(budget.Used(), 0U);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(BudgetTest, LetsOneGoBeyondAndTheOthersWaitInTheOrderOfTheirAge)
{
    Budget::Share oldest(budget);
    Budget::Share middle(budget);
    Budget::Share youngest(budget);
    Budget::Share beyond(budget);
    EXPECT_TRUE(beyond.Ask(200, Note(0)));
    EXPECT_TRUE(beyond.Ask(400, Note(0)));
    EXPECT_FALSE(youngest.Ask(60, Note(3)));
    EXPECT_FALSE(oldest.Ask(60, Note(1)));
    EXPECT_FALSE(middle.Ask(60, Note(2)));
    EXPECT_THAT(calls, IsEmpty());
    beyond.Release();
    // The first fits, the second goes beyond, the third waits.
    EXPECT_THAT(calls, ElementsAre(1, 2));
    oldest.Release();
    EXPECT_THAT(calls, ElementsAre(1, 2));
    middle.Release();
    EXPECT_THAT(calls, ElementsAre(1, 2, 3));
}

TEST_F(BudgetTest, DoesNotLetASmallOnePassThoseThatWait)
{
    Budget::Share beyond(budget);
    Budget::Share waiting(budget);
    EXPECT_TRUE(beyond.Ask(90, Note(0)));
    EXPECT_TRUE(beyond.Ask(101, Note(0)));
    EXPECT_FALSE(waiting.Ask(50, Note(1)));
    beyond.Release();
    EXPECT_THAT(calls, ElementsAre(1));
    EXPECT_TRUE(beyond.Ask(101, Note(0)));
    Budget::Share later(budget);
    EXPECT_FALSE(waiting.Ask(60, Note(1)));
    EXPECT_FALSE(later.Ask(1, Note(2)));
}

TEST_F(BudgetTest, ForgetsOneThatEndsWhileItWaits)
{
    Budget::Share beyond(budget);
    EXPECT_TRUE(beyond.Ask(200, Note(0)));
    {
        Budget::Share waiting(budget);
        EXPECT_FALSE(waiting.Ask(60, Note(1)));
    }
    beyond.Release();
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_EQ(budget.Used(), 0U);
}

TEST_F(BudgetTest, DropsTheAnswersThatWereKeptLongest)
{
    Budget::Share first(budget);
    Budget::Share second(budget);
    Budget::Share third(budget);
    const auto drop = [this](int number) { return [this, number] { calls.push_back(number); }; };
    first.Keep(40, drop(1));
    second.Keep(40, drop(2));
    EXPECT_THAT(calls, IsEmpty());
    third.Keep(70, drop(3));
    EXPECT_THAT(calls, ElementsAre(1, 2));
    EXPECT_EQ(budget.Used(), 70U);
    // One alone may be larger than everything.
    third.Keep(500, drop(3));
    EXPECT_THAT(calls, ElementsAre(1, 2));
}

} // namespace
} // namespace tarno::osa
