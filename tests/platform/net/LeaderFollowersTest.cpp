// The pool of threads that handle events: who goes on, why, and on how many threads at a time.

#include "net/LeaderFollowers.h"
#include "platform/net/ServerFixture.h"

#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace tarno::osa
{
namespace
{

using analytics::platform::FileHandle;
using Cause = EventHandler::Cause;
using Wish = EventHandler::Wish;
using testing::ElementsAre;

// One end of a pair of sockets; does what a test says, and keeps the causes.
class Scripted final : public EventHandler
{
  public:
    explicit Scripted(std::function<Wish(Cause)> script) : m_script(std::move(script))
    {
        std::array<int, 2> ends = {};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
        m_end = FileHandle(ends[0]);
        m_other = FileHandle(ends[1]);
    }
    Wish Continue(Cause cause) override
    {
        {
            const std::lock_guard hold(m_lock);
            m_causes.push_back(cause);
        }
        return m_script(cause);
    }
    int Descriptor() const override { return m_end.Get(); }
    void Send() const { EXPECT_EQ(write(m_other.Get(), "x", 1), 1); }
    void Until(Clock::duration time) { m_deadline = Clock::now() + time; }
    std::vector<Cause> Causes()
    {
        const std::lock_guard hold(m_lock);
        return m_causes;
    }

  private:
    std::function<Wish(Cause)> m_script;
    std::mutex m_lock;
    std::vector<Cause> m_causes;
    FileHandle m_end;
    FileHandle m_other;
};

class LeaderFollowersTest : public testing::Test
{
  protected:
    LeaderFollowersTest() { pool.Start(); }
    ~LeaderFollowersTest() override { pool.Stop(); }

    static std::shared_ptr<Scripted> Once()
    {
        return std::make_shared<Scripted>([](Cause) { return Wish::Nothing; });
    }
    static bool Ended(const std::shared_ptr<Scripted>& handler)
    {
        return Eventually([&handler] { return handler.use_count() == 1; });
    }

    LeaderFollowers pool{2};
};

TEST_F(LeaderFollowersTest, GoesOnWithAnEventAndLetsGoOfWhatIsThrough)
{
    const auto handler = Once();
    pool.Wait(handler, Wish::Read);
    EXPECT_EQ(pool.Waiting(), 1U);
    handler->Send();
    EXPECT_TRUE(Ended(handler));
    EXPECT_THAT(handler->Causes(), ElementsAre(Cause::Ready));
    EXPECT_EQ(pool.Waiting(), 0U);
}

TEST_F(LeaderFollowersTest, AnEventComesOnceForEachWish)
{
    int left = 3;
    const auto handler =
        std::make_shared<Scripted>([&left](Cause) { return --left > 0 ? Wish::Read : Wish::Nothing; });
    handler->Send(); // which nobody reads
    pool.Wait(handler, Wish::Read);
    EXPECT_TRUE(Ended(handler));
    EXPECT_EQ(handler->Causes().size(), 3U);
}

TEST_F(LeaderFollowersTest, ADeadlineEndsAWait)
{
    const auto early = Once();
    const auto late = Once();
    late->Until(std::chrono::hours(1));
    early->Until(std::chrono::milliseconds(1));
    pool.Wait(late, Wish::Read);
    pool.Wait(early, Wish::Read);
    EXPECT_TRUE(Ended(early));
    EXPECT_THAT(early->Causes(), ElementsAre(Cause::Deadline));
    EXPECT_THAT(late->Causes(), ElementsAre());
}

TEST_F(LeaderFollowersTest, AWakeUpIsNotLostIfItComesFirst)
{
    const auto before = Once();
    pool.Wake(*before);
    pool.Wait(before, Wish::WakeUp);
    EXPECT_TRUE(Ended(before));
    const auto after = Once();
    pool.Wait(after, Wish::WakeUp);
    pool.Wake(*after);
    EXPECT_TRUE(Ended(after));
    EXPECT_THAT(before->Causes(), ElementsAre(Cause::Woken));
    EXPECT_THAT(after->Causes(), ElementsAre(Cause::Woken));
}

TEST_F(LeaderFollowersTest, WhatExceedsTheSlotsWaitsWhileEventsAreHandled)
{
    Gate gate;
    std::atomic<int> within = 0;
    std::vector<std::shared_ptr<Scripted>> handlers;
    for (int i = 0; i < 5; ++i)
    {
        handlers.push_back(std::make_shared<Scripted>(
            [&](Cause cause)
            {
                if (cause != Cause::Slot)
                    return Wish::Slot;
                ++within;
                gate.Wait();
                return Wish::Nothing;
            }));
        handlers.back()->Send();
        pool.Wait(handlers.back(), Wish::Read);
    }
    EXPECT_TRUE(Eventually([this] { return pool.WaitingForSlot() == 3; }));
    EXPECT_EQ(within, 2);
    const auto other = Once();
    other->Send();
    pool.Wait(other, Wish::Read);
    EXPECT_TRUE(Ended(other));
    EXPECT_EQ(within, 2);
    gate.Open();
    for (const auto& handler : handlers)
        EXPECT_TRUE(Ended(handler));
    EXPECT_EQ(within, 5);
}

TEST_F(LeaderFollowersTest, TellsEverybodyOfTheEndOnce)
{
    const auto waiting = std::make_shared<Scripted>([](Cause) { return Wish::Read; });
    pool.Wait(waiting, Wish::Read);
    pool.End();
    const auto late = std::make_shared<Scripted>([](Cause) { return Wish::Read; });
    pool.Wait(late, Wish::Read);
    EXPECT_TRUE(Eventually([this] { return pool.Waiting() == 2; }));
    EXPECT_THAT(waiting->Causes(), ElementsAre(Cause::Ending));
    EXPECT_THAT(late->Causes(), ElementsAre(Cause::Ending));
    pool.Stop();
    EXPECT_TRUE(Ended(waiting));
    EXPECT_TRUE(Ended(late));
}

TEST_F(LeaderFollowersTest, WritingToNobodyIsAnErrorAndNoSignal)
{
    signal(SIGPIPE, SIG_DFL); // which would end the process
    std::array<int, 2> ends = {};
    ASSERT_EQ(pipe(ends.data()), 0);
    const FileHandle written(ends[1]);
    close(ends[0]);
    std::atomic<int> error = 0;
    const auto writing = std::make_shared<Scripted>(
        [&](Cause)
        {
            error = write(written.Get(), "x", 1) < 0 ? errno : 0;
            return Wish::Nothing;
        });
    writing->Send();
    pool.Wait(writing, Wish::Read);
    EXPECT_TRUE(Ended(writing));
    EXPECT_EQ(error, EPIPE);
}

TEST_F(LeaderFollowersTest, AStepThatThrowsEndsItsHandlerAlone)
{
    const auto throwing = std::make_shared<Scripted>([](Cause) -> Wish { throw std::bad_alloc(); });
    throwing->Send();
    pool.Wait(throwing, Wish::Read);
    EXPECT_TRUE(Ended(throwing));
    const auto next = Once();
    next->Send();
    pool.Wait(next, Wish::Read);
    EXPECT_TRUE(Ended(next));
}

} // namespace
} // namespace tarno::osa
