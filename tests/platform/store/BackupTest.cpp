// Copies of the store: made while it is in use, put back, and put in the place of a damaged one.

#include "platform/store/FaultyFiles.h"
#include "platform/store/StoreFixture.h"
#include "store/StoreConnection.h"

#include <Drawn.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <random>
#include <thread>

using analytics::platform::BackUpStore;
using analytics::platform::RecoverStore;
using analytics::platform::RestoreStore;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class BackupTest : public StoreFixture
{
  protected:
    const std::string m_state = Path("state");
    const std::string m_database = m_state + "/profiles.db";
    const std::string m_last = m_database + ".last";
    const std::string m_copy = Path("copy.db");

    void Fill()
    {
        Create("first");
        m_manager->SetRuleConfig(1, "r", "<r/>", true);
        m_manager->ExecuteProfile(1);
        Create("second");
    }
    std::string BackUp() { return BackUpStore(m_state, m_copy); }
    // What lies at the name of the copy and at longer ones.
    std::vector<std::string> CopiesAndDrafts() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder))
            if (const std::string name = entry.path().filename(); name.starts_with("copy.db"))
                names.push_back(name);
        std::sort(names.begin(), names.end());
        return names;
    }
    // The names of the profiles in a copy, which is a store by itself.
    std::vector<std::string> NamesIn(const std::string& copy)
    {
        const std::string folder = Path("opened");
        std::filesystem::remove_all(folder);
        std::filesystem::create_directory(folder);
        std::filesystem::copy_file(copy, folder + "/profiles.db");
        analytics::platform::StoreConnection connection(folder + "/profiles.db",
                                                        analytics::platform::StoreConnection::Use::Write);
        std::vector<std::string> names;
        analytics::platform::Query row(connection, "SELECT name FROM profile ORDER BY id");
        while (row.Next())
            names.push_back(row.Text(0));
        return names;
    }
    std::map<std::string, std::string> Files() const
    {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(m_state))
        {
            std::ifstream stream(entry.path(), std::ios::binary);
            files[entry.path().filename()] = std::string(std::istreambuf_iterator<char>(stream), {});
        }
        return files;
    }
    void Overwrite(std::size_t at, const std::string& bytes) const
    {
        std::fstream file(m_database, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(at));
        file << bytes;
    }
    void Damage() { Overwrite(0, std::string(100, 'x')); }
};

// ---- Backup ----

TEST_F(BackupTest, CopiesAStoreInUse)
{
    Fill();
    EXPECT_EQ(BackUp(), "saved 2 profiles and 1 configuration to " + m_copy);
    EXPECT_THAT(NamesIn(m_copy), ElementsAre("first", "second"));
    struct stat status = {};
    ASSERT_EQ(stat(m_copy.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    EXPECT_THAT(CopiesAndDrafts(), ElementsAre("copy.db"));
    Create("third");
    EXPECT_THAT(NamesIn(m_copy), ElementsAre("first", "second"));
}

TEST_F(BackupTest, CopiesAStoreThatNobodyUsesAndLeavesItUsable)
{
    Fill();
    m_manager.reset();
    EXPECT_EQ(BackUp(), "saved 2 profiles and 1 configuration to " + m_copy);
    Open();
    EXPECT_EQ(Create("third"), 3);
}

TEST_F(BackupTest, NeverWritesOverAFile)
{
    Fill();
    Write("copy.db", "mine");
    EXPECT_EQ(AnalyticsFaultOf([this] { BackUp(); }),
              "The file " + m_copy + " exists; choose a name that is free");
    EXPECT_EQ(std::filesystem::file_size(m_copy), 4u);
    EXPECT_THAT(AnalyticsFaultOf([this] { BackUpStore(m_state, Path("none/copy")); }),
                AllOf(HasSubstr("can't be made: No such file"), HasSubstr("choose a folder")));
    EXPECT_EQ(AnalyticsFaultOf([this] { BackUpStore(Path("empty"), Path("other")); }),
              "There is no profile store in " + Path("empty") + "; name the service's folder with --state");
}

TEST_F(BackupTest, TouchesNothingElseBesideTheCopy)
{
    Fill();
    std::filesystem::create_symlink("nowhere", m_copy);
    EXPECT_EQ(AnalyticsFaultOf([this] { BackUp(); }),
              "The file " + m_copy + " exists; choose a name that is free");
    EXPECT_EQ(std::filesystem::read_symlink(m_copy), "nowhere");
    std::filesystem::remove(m_copy);
    Write("copy.db.part", "mine");
    BackUp();
    EXPECT_EQ(std::filesystem::file_size(m_copy + ".part"), 4u);
    EXPECT_THAT(CopiesAndDrafts(), ElementsAre("copy.db", "copy.db.part"));
}

TEST_F(BackupTest, OfSeveralToOneNameOneIsMade)
{
    Fill();
    std::atomic<int> made = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back(
            [&]
            {
                const std::string fault = AnalyticsFaultOf([this] { BackUp(); });
                if (fault == "(no fault)")
                    ++made;
                else
                    EXPECT_EQ(fault, "The file " + m_copy + " exists; choose a name that is free");
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(made, 1);
    EXPECT_THAT(NamesIn(m_copy), ElementsAre("first", "second"));
    EXPECT_THAT(CopiesAndDrafts(), ElementsAre("copy.db"));
}

TEST_F(BackupTest, WhatMayNotBeReadIsNotCalledMissing)
{
    m_manager.reset();
    const std::string copy = m_state + "/copy.db";
    BackUpStore(m_state, copy);
    ASSERT_EQ(chmod(m_state.c_str(), 0), 0);
    const std::string advice =
        " can't be read: Permission denied; run this with sudo or as the service's user";
    const auto run = [&]
    {
        if (geteuid() == 0) // who may read all
        {
            ASSERT_EQ(setuid(65534), 0);
        }
        EXPECT_EQ(AnalyticsFaultOf([this] { BackUp(); }), "The file " + m_database + advice);
        EXPECT_EQ(AnalyticsFaultOf([&] { RestoreStore(m_state, copy); }), "The file " + copy + advice);
    };
    // In a process of its own, which never becomes root again.
    EXPECT_EXIT((run(), _exit(HasFailure() ? 1 : 0)), testing::ExitedWithCode(0), "");
    ASSERT_EQ(chmod(m_state.c_str(), 0700), 0);
    std::filesystem::create_symlink("loop", Path("loop"));
    EXPECT_THAT(AnalyticsFaultOf([this] { RestoreStore(m_state, Path("loop")); }),
                AllOf(HasSubstr("can't be read: Too many levels"), HasSubstr("check its path")));
}

TEST_F(BackupTest, MakesNoCopyOfADamagedStore)
{
    Fill();
    m_manager.reset();
    Damage();
    EXPECT_THAT(AnalyticsFaultOf([this] { BackUp(); }),
                "The file " + m_database +
                    " is damaged or isn't a profile store; give --restore a copy that --backup has made");
    EXPECT_THAT(CopiesAndDrafts(), ElementsAre());
}

TEST_F(BackupTest, EachCopyHoldsWhatWasAcknowledgedBefore)
{
    std::atomic<int> acknowledged = 0;
    std::atomic<bool> ended = false;
    std::thread writer(
        [&]
        {
            while (!ended)
                acknowledged = Create();
        });
    for (int i = 0; i < 10; ++i)
    {
        const auto before = static_cast<std::size_t>(acknowledged);
        const std::string copy = Path("copy" + std::to_string(i));
        BackUpStore(m_state, copy);
        EXPECT_GE(NamesIn(copy).size(), before);
    }
    ended = true;
    writer.join();
}

// ---- Restore ----

TEST_F(BackupTest, PutsACopyBackAndKeepsWhatWasThere)
{
    Fill();
    BackUp();
    m_manager->DeleteProfile(1);
    EXPECT_THAT(AnalyticsFaultOf([this] { RestoreStore(m_state, m_copy); }),
                HasSubstr("is in use by another process"));
    m_manager.reset();
    EXPECT_EQ(RestoreStore(m_state, m_copy),
              "restored 2 profiles and 1 configuration; what was there is kept as " + m_database +
                  ".replaced-1");
    EXPECT_THAT(NamesIn(m_database + ".replaced-1"), ElementsAre("second"));
    Open();
    EXPECT_THAT(Names(), ElementsAre("first", "second"));
    EXPECT_EQ(Active(), 1);
    EXPECT_EQ(RuleConfig(1, "r"), "<r/>");
    EXPECT_THAT(NamesIn(m_copy), ElementsAre("first", "second"));
}

TEST_F(BackupTest, RestoresIntoAnEmptyFolder)
{
    Fill();
    BackUp();
    m_manager.reset();
    std::filesystem::remove_all(m_state);
    EXPECT_EQ(RestoreStore(m_state, m_copy), "restored 2 profiles and 1 configuration");
    Open();
    EXPECT_THAT(Names(), ElementsAre("first", "second"));
}

TEST_F(BackupTest, PutsNothingBackThatIsNoStore)
{
    Fill();
    m_manager.reset();
    const auto before = Files();
    Write("copy.db", "no copy at all");
    EXPECT_THAT(AnalyticsFaultOf([this] { RestoreStore(m_state, m_copy); }),
                HasSubstr("is damaged or isn't a profile store"));
    Write("empty.db", "");
    EXPECT_THAT(AnalyticsFaultOf([this] { RestoreStore(m_state, Path("empty.db")); }),
                HasSubstr("is damaged or isn't a profile store"));
    EXPECT_EQ(AnalyticsFaultOf([this] { RestoreStore(m_state, Path("none")); }),
              "There is no file " + Path("none") + "; name a copy that --backup has made");
    EXPECT_EQ(AnalyticsFaultOf([this] { RestoreStore(m_state, m_state); }),
              "The file " + m_state + " can't be read: it isn't a regular file; check its path");
    EXPECT_EQ(Files(), before);
}

TEST_F(BackupTest, AReplacementThatWasCutOffIsBroughtToItsEnd)
{
    Fill();
    m_manager.reset();
    std::filesystem::rename(m_database, m_database + ".restored");
    Write("state/profiles.db", "damaged");
    Open();
    EXPECT_THAT(Names(), ElementsAre("first", "second"));
    m_manager.reset();
    EXPECT_EQ(Files().at("profiles.db.replaced-1"), "damaged");
    EXPECT_EQ(Files().count("profiles.db.restored"), 0u);
}

// ---- The last good copy ----

TEST_F(BackupTest, TheLastGoodCopyIsMadeAtTheStartAndAtTheFirstChange)
{
    EXPECT_TRUE(std::filesystem::exists(m_last));
    Create("first");
    EXPECT_THAT(NamesIn(m_last), ElementsAre("first"));
    Create("second");
    EXPECT_THAT(NamesIn(m_last), ElementsAre("first")); // not twice in an hour
    Reopen();
    EXPECT_THAT(NamesIn(m_last), ElementsAre("first", "second"));
}

TEST_F(BackupTest, ANewStoreLeavesTheCopyOfAnotherUntilItChanges)
{
    Create("first");
    m_manager.reset();
    std::filesystem::remove(m_database);
    Open();
    EXPECT_THAT(NamesIn(m_last), ElementsAre("first"));
    Create("new");
    EXPECT_THAT(NamesIn(m_last), ElementsAre("new"));
}

TEST_F(BackupTest, TheCopyOfAMissingStoreIsKeptFromTheEmptyOneThatBegins)
{
    Create("first");
    m_manager.reset();
    std::filesystem::remove(m_database);
    EXPECT_THAT(ErrorsOf([this] { Open(); }),
                HasSubstr("The profile store " + m_database + " is missing; its last good copy is kept as " +
                          m_last + "-1, which --restore puts back"));
    Reopen(); // copies the store, empty as it is
    EXPECT_THAT(NamesIn(m_last), ElementsAre());
    EXPECT_THAT(NamesIn(m_last + "-1"), ElementsAre("first"));
    Create("new");
    Reopen();
    std::filesystem::remove(m_database); // while it runs
    EXPECT_THAT(Names(), ElementsAre());
    std::filesystem::remove(m_database); // with nothing new to keep
    Reopen();
    Create("newer");
    EXPECT_THAT(NamesIn(m_last + "-1"), ElementsAre("first"));
    EXPECT_THAT(NamesIn(m_last + "-2"), ElementsAre("new"));
    EXPECT_FALSE(std::filesystem::exists(m_last + "-3"));
    m_manager.reset();
    EXPECT_THAT(RestoreStore(m_state, m_last + "-1"), StartsWith("restored 1 profile "));
    EXPECT_THAT(NamesIn(m_database), ElementsAre("first"));
}

TEST_F(BackupTest, ACopyThatCannotBeMadeFailsNoChange)
{
    m_manager.reset();
    std::filesystem::remove(m_last);
    std::filesystem::create_directories(m_last + "/in the way");
    const std::string said = ErrorsOf(
        [this]
        {
            Open();
            EXPECT_EQ(Create("first"), 1);
        });
    EXPECT_THAT(said, HasSubstr("The last good copy of the profile store can't be made: "));
    EXPECT_THAT(Names(), ElementsAre("first"));
}

// ---- Recovery ----

TEST_F(BackupTest, ASoundStoreIsLeftAlone)
{
    Fill();
    m_manager.reset();
    const auto before = Files();
    EXPECT_EQ(RecoverStore(m_state), "the profile store " + m_database + " is sound; nothing was changed");
    EXPECT_EQ(Files(), before);
    std::filesystem::remove_all(m_state);
    EXPECT_THAT(RecoverStore(m_state), HasSubstr("there is no profile store in " + m_state + " yet"));
}

TEST_F(BackupTest, TheLastGoodCopyTakesThePlaceOfADamagedStore)
{
    Fill();
    Reopen();
    m_manager.reset();
    Damage();
    const std::string damaged = Files().at("profiles.db");
    EXPECT_THAT(AnalyticsFaultOf([this] { Open(); }),
                HasSubstr("it is damaged; restore a backup with --restore"));
    EXPECT_EQ(Files().at("profiles.db"), damaged);
    EXPECT_THAT(RecoverStore(m_state),
                AllOf(StartsWith("the profile store " + m_database + " was damaged; the last good copy, "),
                      HasSubstr(" old, is in its place and holds 2 profiles and 1 configuration"),
                      HasSubstr("kept as " + m_database + ".damaged-1")));
    EXPECT_EQ(Files().at("profiles.db.damaged-1"), damaged);
    Open();
    EXPECT_THAT(Names(), ElementsAre("first", "second"));
    EXPECT_EQ(Active(), 1);
    EXPECT_EQ(Create(), 3);
}

TEST_F(BackupTest, AStoreOfNoLengthBesideACopyIsDamaged)
{
    Fill();
    Reopen();
    m_manager.reset();
    std::filesystem::resize_file(m_database, 0);
    EXPECT_THAT(AnalyticsFaultOf([this] { Open(); }), HasSubstr("it is damaged"));
    EXPECT_THAT(RecoverStore(m_state), HasSubstr("holds 2 profiles and 1 configuration"));
    Open();
    EXPECT_THAT(Names(), ElementsAre("first", "second"));
}

TEST_F(BackupTest, AMissingStoreBesideACopyIsRecovered)
{
    Fill();
    Reopen();
    m_manager.reset();
    std::filesystem::remove(m_database);
    EXPECT_THAT(RecoverStore(m_state),
                AllOf(StartsWith("the profile store " + m_database + " was missing; the last good copy, "),
                      HasSubstr(" old, is in its place and holds 2 profiles and 1 configuration")));
    Open();
    EXPECT_THAT(Names(), ElementsAre("first", "second"));
    EXPECT_FALSE(std::filesystem::exists(m_last + "-1"));
}

TEST_F(BackupTest, WithoutASoundCopyItSaysSo)
{
    Fill();
    m_manager.reset();
    Damage();
    Write("state/profiles.db.last", "damaged too");
    const auto before = Files();
    EXPECT_THAT(AnalyticsFaultOf([this] { RecoverStore(m_state); }),
                "The file " + m_last +
                    " is damaged or isn't a profile store; give --restore a copy that --backup has made");
    EXPECT_EQ(Files(), before);
    std::filesystem::remove(m_last);
    EXPECT_EQ(AnalyticsFaultOf([this] { RecoverStore(m_state); }),
              "The profile store " + m_database +
                  " is damaged, and there is no last good copy; restore a backup with --restore, or move the "
                  "files away to begin with an empty store");
}

TEST_F(BackupTest, DamagedInAnyWayItStartsOrRecoversFromTheCopy)
{
    m_manager.reset();
    faulty::Install(); // the disk isn't waited for
    Open();
    for (int id = 1; id <= 30; ++id)
    {
        Create("profile " + std::to_string(id));
        m_manager->SetRuleConfig(
            id, "r", "<r>" + std::string(static_cast<std::size_t>(id % 7) * 1500, 'x') + "</r>", true);
    }
    Reopen();
    m_manager.reset();
    std::filesystem::rename(m_state, Path("filled"));
    std::mt19937 chance(std::random_device{}());
    const auto draw = [&chance](std::size_t below)
    { return std::uniform_int_distribution<std::size_t>(0, below - 1)(chance); };
    int found = 0;
    for (int way = 0; way < Drawn("DAMAGES", 40); ++way)
    {
        std::filesystem::remove_all(m_state);
        std::filesystem::copy(Path("filled"), m_state);
        const auto size = static_cast<std::size_t>(std::filesystem::file_size(m_database));
        const std::size_t at = draw(size);
        const std::size_t length = std::min(size - at, std::size_t{1} << draw(16));
        SCOPED_TRACE("way " + std::to_string(way) + ": " + std::to_string(length) + " at " +
                     std::to_string(at));
        if (draw(4) == 0)
            std::filesystem::resize_file(m_database, at);
        else
            Overwrite(at, std::string(length, static_cast<char>(draw(256))));
        const std::string fault = AnalyticsFaultOf([this] { Open(); });
        m_manager.reset();
        const std::string report = RecoverStore(m_state);
        if (fault == "(no fault)") // within a text, which only its reader can judge, or in an unused part
        {
            EXPECT_THAT(report, HasSubstr("is sound"));
            continue;
        }
        ++found;
        EXPECT_THAT(fault, HasSubstr("it is damaged"));
        EXPECT_THAT(report, HasSubstr("holds 30 profiles and 30 configurations"));
        Open();
        EXPECT_EQ(Names().size(), 30u);
        EXPECT_EQ(Create(), 31);
        m_manager.reset();
    }
    EXPECT_GT(found, 0);
}
