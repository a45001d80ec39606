// The store fails, says so, has changed nothing, and works again once the cause is gone.

#include "platform/store/StoreFixture.h"
#include "store/StoreConnection.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

using analytics::platform::BackUpStore;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class RecoveryTest : public StoreFixture
{
  protected:
    const std::string m_database = Path("state/profiles.db");

    void Fill()
    {
        Create("kept");
        m_manager->SetRuleConfig(1, "r", "<kept/>", true);
        m_manager->ExecuteProfile(1);
    }
    void ExpectAsFilled()
    {
        EXPECT_THAT(Names(), ElementsAre("kept"));
        EXPECT_EQ(RuleConfig(1, "r"), "<kept/>");
        EXPECT_EQ(Active(), 1);
    }
    // Every kind of change fails with these words.
    void ExpectNoChange(const std::string& words)
    {
        const std::string big(1'000'000, 'x');
        int id = -1;
        EXPECT_THAT(AnalyticsFaultOf([&] { m_manager->SetRuleConfig(1, "r", big, false); }),
                    HasSubstr(words));
        EXPECT_THAT(AnalyticsFaultOf([&] { m_manager->SetRuleConfig(1, "new", big, true); }),
                    HasSubstr(words));
        EXPECT_THAT(AnalyticsFaultOf([&] { m_manager->SetEngineConfig(1, "e", big, "renamed", "p"); }),
                    HasSubstr(words));
        EXPECT_EQ(id, -1);
    }
};

// ---- Disk full ----

TEST_F(RecoveryTest, WorksAgainAfterAFileCouldNotGrow)
{
    Fill();
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit tight = {200'000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    ExpectNoChange("the disk is full; free some space on it and try again");
    ExpectAsFilled();
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    ExpectAsFilled();
    EXPECT_EQ(Create("new"), 2);
    Reopen();
    EXPECT_THAT(Names(), ElementsAre("kept", "new"));
    EXPECT_EQ(RuleConfig(1, "r"), "<kept/>");
}

TEST_F(RecoveryTest, ACopyThatFindsNoRoomIsNotBlamedOnTheStore)
{
    Fill();
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit tight = {10'000, before.rlim_max};
    std::filesystem::create_directory(Path("stick"));
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    const std::string fault = AnalyticsFaultOf([this] { BackUpStore(Path("state"), Path("stick/copy.db")); });
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_THAT(fault, StartsWith("The profile store in " + Path("stick") + " failed: the disk "));
    EXPECT_TRUE(std::filesystem::is_empty(Path("stick")));
    ExpectAsFilled();
}

TEST_F(RecoveryTest, ACopyOfAStoreThatIsLockedSaysSo)
{
    Fill();
    m_manager.reset();
    SQLite::Database other(Path("state/profiles.db"), SQLite::OPEN_READWRITE);
    other.exec("PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE; UPDATE profile SET name = 'x'");
    EXPECT_THAT(AnalyticsFaultOf([this] { BackUpStore(Path("state"), Path("copy.db")); }),
                HasSubstr("another program holds it locked"));
}

namespace
{
// A file system of 1 MiB, seen by this process only. Not permitted everywhere.
bool MountSmall(const std::string& folder)
{
    return unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=1m") == 0;
}

void FillUp(const std::string& file)
{
    std::ofstream stream(file);
    for (const std::size_t size : {65536u, 4096u, 1u})
    {
        while (stream << std::string(size, 'x') << std::flush)
            ;
        stream.clear();
    }
}
} // namespace

TEST_F(RecoveryTest, WorksAgainAfterTheDiskWasFull)
{
    std::filesystem::create_directory(Path("disk"));
    const bool mounted = MountSmall(Path("disk"));
    m_configuration.stateFolder = Path("disk/state");
    Configure();
    Reopen();
    Fill();
    if (!mounted)
        return ExpectAsFilled(); // the test above has this machine's way to a full disk
    FillUp(Path("disk/filler"));
    ExpectNoChange("the disk is full");
    ExpectAsFilled();
    m_manager.reset();
    m_configuration.stateFolder = Path("disk/other");
    Configure();
    EXPECT_THAT(AnalyticsFaultOf([this] { Open(); }), HasSubstr("the disk is full"));
    std::filesystem::remove(Path("disk/filler"));
    Open();
    EXPECT_EQ(Create("new"), 1);
    m_configuration.stateFolder = Path("disk/state");
    Configure();
    Reopen();
    ExpectAsFilled();
    EXPECT_EQ(Create("new"), 2);
    FillUp(Path("disk/filler"));
    ExpectNoChange("the disk is full");
    std::filesystem::remove(Path("disk/filler"));
    EXPECT_EQ(Create("newer"), 3);
    m_manager.reset();
    ASSERT_EQ(umount2(Path("disk").c_str(), MNT_DETACH), 0);
}

// ---- Read-only ----

namespace
{
constexpr uid_t kNobody = 65534;

// Root may write whatever the mode says.
void BecomeNobody(const std::filesystem::path& folder)
{
    if (geteuid() != 0)
        return;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        ASSERT_EQ(chown(entry.path().c_str(), kNobody, kNobody), 0);
    ASSERT_EQ(chown(folder.c_str(), kNobody, kNobody), 0);
    ASSERT_EQ(setgid(kNobody), 0);
    ASSERT_EQ(setuid(kNobody), 0);
}
} // namespace

TEST_F(RecoveryTest, WorksAgainAfterItWasReadOnly)
{
    Fill();
    m_manager.reset();
    const auto run = [this]
    {
        BecomeNobody(m_folder);
        ASSERT_EQ(chmod(Path("state").c_str(), 0500), 0);
        EXPECT_THAT(AnalyticsFaultOf([this] { Open(); }), HasSubstr("it is read-only; make the folder"));
        ASSERT_EQ(chmod(Path("state").c_str(), 0700), 0);
        ASSERT_EQ(chmod(m_database.c_str(), 0444), 0);
        EXPECT_THAT(AnalyticsFaultOf([this] { Open(); }), HasSubstr("it is read-only; make the folder"));
        ASSERT_EQ(chmod(m_database.c_str(), 0644), 0);
        Open();
        ExpectAsFilled();
        // While it runs: another file that can't be written takes the place.
        m_manager->SetProfileName(1, "changed");
        std::filesystem::copy_file(m_database, Path("copy"));
        ASSERT_EQ(chmod(Path("copy").c_str(), 0444), 0);
        std::filesystem::rename(Path("copy"), m_database);
        ExpectNoChange("it is read-only");
        ASSERT_EQ(chmod(m_database.c_str(), 0644), 0);
        EXPECT_EQ(Create("new"), 2);
    };
    // In a process of its own, which never becomes root again.
    EXPECT_EXIT((run(), m_manager.reset(), _exit(HasFailure() ? 1 : 0)), testing::ExitedWithCode(0), "");
}

// ---- Damaged ----

TEST_F(RecoveryTest, WorksAgainAfterADamagedFileIsReplaced)
{
    Fill();
    // More than the connections keep in memory.
    Replace("settings.xml", "<settings><limits><profileBytes>20000000</profileBytes></limits></settings>");
    Configure();
    for (int i = 0; i < 10; ++i)
        m_manager->SetEngineConfig(1, "e" + std::to_string(i), std::string(1'000'000, 'x'));
    Reopen();
    m_manager.reset();
    std::filesystem::copy_file(m_database, Path("backup"));
    Open();
    const auto size = static_cast<std::size_t>(std::filesystem::file_size(m_database));
    {
        std::fstream file(m_database, std::ios::in | std::ios::out | std::ios::binary);
        file << std::string(size, '\x5a');
    }
    for (int i = 0; i < 3; ++i)
        EXPECT_THAT(AnalyticsFaultOf([&] { EngineConfig(1, "e" + std::to_string(i)); }),
                    HasSubstr("it is damaged; restore a backup with --restore"));
    ExpectNoChange("it is damaged");
    EXPECT_THAT(AnalyticsFaultOf([this] { Reopen(); }), HasSubstr("it is damaged"));
    std::filesystem::rename(Path("backup"), m_database);
    Open();
    ExpectAsFilled();
    EXPECT_EQ(EngineConfig(1, "e9").size(), 1'000'000u);
}

TEST_F(RecoveryTest, AFileThatIsNoDatabaseIsDamagedUntilItIsMovedAway)
{
    Fill();
    Replace("state/profiles.db", std::string(10000, 'x'));
    ExpectNoChange("it is damaged");
    EXPECT_THAT(AnalyticsFaultOf([this] { List(); }), HasSubstr("it is damaged"));
    std::filesystem::rename(m_database, Path("damaged"));
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_EQ(Create("new"), 1);
    Reopen();
    EXPECT_THAT(Names(), ElementsAre("new"));
}

TEST_F(RecoveryTest, FindsDamageWhenItOpens)
{
    Fill();
    for (int i = 0; i < 100; ++i)
        m_manager->SetRuleConfig(1, "r" + std::to_string(i), std::string(1000, 'x'), false);
    m_manager.reset();
    {
        std::fstream file(m_database, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(4096);
        file << std::string(8192, '\x5a');
    }
    EXPECT_THAT(AnalyticsFaultOf([this] { Reopen(); }), HasSubstr("it is damaged"));
}

// ---- Files that are others ----

TEST_F(RecoveryTest, AReplacedFileCountsFromTheNextOperation)
{
    Create("a");
    m_manager.reset();
    std::filesystem::copy_file(m_database, Path("backup"));
    Open();
    Create("b"); // stands in the log of the file that goes away
    std::filesystem::rename(Path("backup"), m_database);
    EXPECT_THAT(Names(), ElementsAre("a"));
    EXPECT_EQ(Create("c"), 2);
    Reopen();
    EXPECT_THAT(Names(), ElementsAre("a", "c"));
}

TEST_F(RecoveryTest, AFileThatIsReplacedRightBeforeTheEndIsNotMixedWithTheOldLog)
{
    Create("a");
    m_manager.reset();
    std::filesystem::copy_file(m_database, Path("backup"));
    Open();
    Create("b");
    std::filesystem::rename(m_database, Path("old"));
    std::filesystem::rename(Path("backup"), m_database);
    Reopen();
    EXPECT_THAT(Names(), ElementsAre("a"));
    m_manager.reset();
    std::filesystem::rename(Path("old"), m_database);
    Open();
    EXPECT_THAT(Names(), ElementsAre("a", "b"));
}

TEST_F(RecoveryTest, ALogThatComesWithAReplacedFileIsKept)
{
    Create("a");
    // A backup of a running store: the file and its log.
    std::filesystem::create_directory(Path("backup"));
    for (const char* name : {"profiles.db", "profiles.db-wal"})
        std::filesystem::copy_file(Path("state") + "/" + name, Path("backup") + "/" + name);
    ASSERT_GT(std::filesystem::file_size(Path("backup/profiles.db-wal")), 0u);
    Create("b");
    for (const char* name : {"profiles.db-wal", "profiles.db"})
        std::filesystem::rename(Path("backup") + "/" + name, Path("state") + "/" + name);
    EXPECT_THAT(Names(), ElementsAre("a"));
    Create("c");
    Reopen();
    EXPECT_THAT(Names(), ElementsAre("a", "c"));
}

TEST_F(RecoveryTest, ALogThatIsRemovedLosesNothing)
{
    Fill();
    std::filesystem::remove(m_database + "-wal");
    ExpectAsFilled();
    Create("new");
    Reopen();
    EXPECT_THAT(Names(), ElementsAre("kept", "new"));
}

TEST_F(RecoveryTest, BeginsAnewWhenTheFileIsRemoved)
{
    Fill();
    std::filesystem::remove(m_database);
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_EQ(Create("new"), 1);
    EXPECT_EQ(Active(), -1);
    Reopen();
    EXPECT_THAT(Names(), ElementsAre("new"));
}

TEST_F(RecoveryTest, BeginsAnewWhenTheFolderIsRemovedAndLocksItAgain)
{
    for (int i = 0; i < 3; ++i)
    {
        Fill();
        std::filesystem::remove_all(Path("state"));
        if (i == 1)
            std::filesystem::create_directory(Path("state"));
        EXPECT_EQ(Create("new"), 1);
        EXPECT_THAT(AnalyticsFaultOf([] { analytics::ProfileManager second; }),
                    HasSubstr("in use by another process"));
        std::filesystem::remove_all(Path("state"));
    }
    std::filesystem::create_directory(Path("other"));
    std::ofstream(Path("state")) << "no folder";
    EXPECT_THAT(AnalyticsFaultOf([this] { Create(); }), HasSubstr("it isn't a folder"));
    std::filesystem::remove(Path("state"));
    EXPECT_EQ(Create("new"), 1);
}

TEST_F(RecoveryTest, TakesTheFolderThatIsMovedBack)
{
    Fill();
    std::filesystem::rename(Path("state"), Path("away"));
    EXPECT_THAT(Names(), IsEmpty());
    std::filesystem::remove_all(Path("state"));
    std::filesystem::rename(Path("away"), Path("state"));
    ExpectAsFilled();
}

// ---- Locked ----

TEST_F(RecoveryTest, WorksAgainAfterAnotherProgramHeldItLocked)
{
    Fill();
    {
        using analytics::platform::StoreConnection;
        StoreConnection other(m_database, StoreConnection::Use::Write);
        other.Database().exec("BEGIN IMMEDIATE");
        EXPECT_THAT(AnalyticsFaultOf([this] { Create("new"); }),
                    HasSubstr("another program holds it locked"));
        ExpectAsFilled();
    }
    EXPECT_EQ(Create("new"), 2);
}
