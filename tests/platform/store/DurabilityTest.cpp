#include "platform/store/StoreFixture.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <random>
#include <set>
#include <thread>

using analytics::ProfileManager;
using testing::HasSubstr;

// ---- One process at a time ----

class OneProcessTest : public PlatformTest
{
};

TEST_F(OneProcessTest, ASecondProcessIsKeptOutUntilTheFirstEnds)
{
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0)
    {
        const ProfileManager manager;
        const char byte = 'x';
        if (write(ready[1], &byte, 1) == 1)
            pause();
        _exit(1);
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    const std::string fault = AnalyticsFaultOf([] { ProfileManager second; });
    kill(child, SIGKILL);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_EQ(fault, "The state folder " + Path("state") +
                         " is in use by another process; end that process, or choose another state folder");
    EXPECT_NO_THROW(ProfileManager());
    EXPECT_NO_THROW(ProfileManager());
}

TEST_F(OneProcessTest, ASecondManagerOfTheSameProcessIsKeptOutToo)
{
    auto first = std::make_unique<ProfileManager>();
    EXPECT_THAT(AnalyticsFaultOf([] { ProfileManager second; }), HasSubstr("is in use by another process"));
    first.reset();
    EXPECT_NO_THROW(ProfileManager());
}

// ---- Killed at any moment ----

namespace
{
std::string DocumentOf(int number)
{
    return "<n>" + std::string(static_cast<std::size_t>(number % 7) * 3000, 'x') + "</n>";
}

// Changes the store until it is killed, and tells the number of each change once it is acknowledged:
// profile N, then its rule, then that it runs.
[[noreturn]] void WriteForever(int report)
{
    ProfileManager manager;
    for (int change = 0;; ++change)
    {
        std::vector<analytics::ProfileSummary> list;
        manager.GetProfileList(list);
        int profile = list.empty() ? -1 : list.back().id;
        if (change % 3 == 0)
            manager.CreateProfile(profile, "p");
        else if (change % 3 == 1)
            manager.SetRuleConfig(profile, "r", DocumentOf(profile), true);
        else
            manager.ExecuteProfile(profile);
        const int told[2] = {profile, change % 3};
        if (write(report, told, sizeof told) != sizeof told)
            _exit(1);
    }
}

// Reads `count` acknowledgements, kills the child, and gives the last one that it had sent.
std::pair<int, int> KillAfter(int count)
{
    int report[2];
    EXPECT_EQ(pipe(report), 0);
    const pid_t child = fork();
    if (child == 0)
        WriteForever(report[1]);
    close(report[1]);
    int told[2] = {0, 0};
    int last[2] = {0, 0};
    const auto next = [&]
    {
        if (read(report[0], told, sizeof told) != sizeof told)
            return false;
        std::copy(told, told + 2, last);
        return true;
    };
    for (int i = 0; i < count && next(); ++i)
        ;
    kill(child, SIGKILL);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    while (next())
        ;
    close(report[0]);
    return {last[0], last[1]};
}
} // namespace

TEST_F(OneProcessTest, EveryAcknowledgedChangeSurvivesAKill)
{
    std::mt19937 random(20);
    for (int round = 0; round < 25; ++round)
    {
        const auto [profile, change] = KillAfter(1 + static_cast<int>(random() % 60));
        ProfileManager manager;
        std::vector<analytics::ProfileSummary> list;
        manager.GetProfileList(list);
        ASSERT_FALSE(list.empty());
        // At most the change that was under way has come on top.
        ASSERT_GE(list.back().id, profile);
        ASSERT_LE(list.back().id, profile + 1);
        for (int id = 1; id <= profile; ++id)
        {
            std::string config;
            const bool stored = manager.GetRuleConfig(id, "r", config);
            // A round that was killed between the two leaves its last profile without a rule.
            ASSERT_TRUE(stored || id < profile || change == 0);
            ASSERT_TRUE(!stored || config == DocumentOf(id));
        }
        int active = -1;
        manager.GetActiveProfile(active);
        if (change == 2)
        {
            ASSERT_EQ(active, profile);
        }
    }
}

// ---- Many threads ----

class ManyThreadsTest : public StoreFixture
{
};

TEST_F(ManyThreadsTest, EachSeesItsOwnChangesAndNoneIsLost)
{
    constexpr int kThreads = 8;
    constexpr int kProfiles = 12;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back(
            [this, t]
            {
                for (int i = 0; i < kProfiles; ++i)
                {
                    const std::string name = std::to_string(t) + "/" + std::to_string(i);
                    const int id = Create(name);
                    EXPECT_EQ(m_manager->GetProfileName(id), name);
                    EXPECT_TRUE(m_manager->SetRuleConfig(id, "r", name, true));
                    EXPECT_EQ(RuleConfig(id, "r"), name);
                    EXPECT_TRUE(m_manager->SetEngineConfig(id, "e", name, name + "'", "p"));
                    EXPECT_EQ(EngineConfig(id, "e"), name);
                    EXPECT_EQ(m_manager->GetProfileName(id), name + "'");
                    EXPECT_EQ(ActiveRules(id).size(), 1u);
                    EXPECT_TRUE(m_manager->ExecuteProfile(id));
                    EXPECT_GE(List().size(), 1u);
                    EXPECT_TRUE(m_manager->AlgorithmControl(2 + i % 2));
                    m_manager->GetMDActiveState();
                    if (i % 2 == 0)
                    {
                        EXPECT_TRUE(m_manager->DeleteProfile(id));
                    }
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    std::set<std::string> names;
    std::set<int> ids;
    for (const auto& profile : List())
    {
        names.insert(profile.name);
        ids.insert(profile.id);
    }
    EXPECT_EQ(names.size(), static_cast<std::size_t>(kThreads * kProfiles / 2));
    EXPECT_EQ(ids.size(), names.size());
    EXPECT_LE(*ids.rbegin(), kThreads * kProfiles);
    for (int t = 0; t < kThreads; ++t)
        for (int i = 1; i < kProfiles; i += 2)
            EXPECT_EQ(names.count(std::to_string(t) + "/" + std::to_string(i) + "'"), 1u);
}

TEST_F(ManyThreadsTest, AllComeThroughAReplacedStore)
{
    Create("a");
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back(
            [this, t]
            {
                for (int i = 0; i < 30; ++i)
                    t % 2 == 0 ? static_cast<void>(Create("b")) : static_cast<void>(List());
            });
    for (int i = 0; i < 10; ++i)
        std::filesystem::remove(Path("state/profiles.db"));
    for (std::thread& thread : threads)
        thread.join();
    Create("last");
    Reopen();
    EXPECT_EQ(Names().back(), "last");
}
