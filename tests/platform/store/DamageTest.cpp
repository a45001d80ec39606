// A store that is damaged at all kinds of places: the start says so and touches nothing, a recovery saves
// what can be read and keeps the damaged files.

#include "platform/store/FaultyFiles.h"
#include "platform/store/StoreFixture.h"

#include <map>

using analytics::platform::RecoverStore;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace
{
constexpr std::size_t kPage = 4096;
constexpr int kProfiles = 60;
constexpr char kNoFault[] = "(no fault)";

std::string DocumentOf(int profile)
{
    return "<d>" + std::string(static_cast<std::size_t>(profile % 7) * 1500, 'x') + "</d>";
}
} // namespace

class DamageTest : public StoreFixture
{
  protected:
    const std::string m_database = Path("state/profiles.db");

    int m_deleted = 0;

    // Profiles 1 to 60 with a rule each, 7 deleted, 5 active, and identifiers given up to 62.
    void Fill()
    {
        faulty::Install(); // none fails, and the disk isn't waited for
        Reopen();
        m_deleted = 7;
        for (int id = 1; id <= kProfiles + 2; ++id)
        {
            Create("profile " + std::to_string(id));
            m_manager->SetRuleConfig(id, "com.varlo.rule.r", DocumentOf(id), id % 2 == 0);
        }
        m_manager->SetCameraPreset(3, "preset");
        for (const int id : {7, kProfiles + 1, kProfiles + 2})
            m_manager->DeleteProfile(id);
        m_manager->ExecuteProfile(5);
        m_manager->AlgorithmControl(3);
        m_manager.reset();
        std::filesystem::rename(Path("state"), Path("filled"));
    }
    void Restore()
    {
        m_manager.reset();
        std::filesystem::remove_all(Path("state"));
        std::filesystem::copy(Path("filled"), Path("state"));
    }
    void Overwrite(std::size_t at, const std::string& bytes, const std::string& suffix = "") const
    {
        std::fstream file(m_database + suffix, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(at));
        file << bytes;
    }
    std::map<std::string, std::string> Files() const
    {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(Path("state")))
        {
            std::ifstream stream(entry.path(), std::ios::binary);
            files[entry.path().filename()] = std::string(std::istreambuf_iterator<char>(stream), {});
        }
        return files;
    }
    // Opens what is there after a recovery, and finds nothing that wasn't there. Returns how many of the
    // profiles and of the rules are there, unharmed.
    std::pair<int, int> Saved()
    {
        Open();
        int names = 0;
        int rules = 0;
        for (const auto& profile : List())
        {
            EXPECT_NE(profile.id, m_deleted) << "it had been deleted";
            EXPECT_LE(profile.id, kProfiles) << "it had been deleted";
            const std::string name = "profile " + std::to_string(profile.id);
            EXPECT_TRUE(profile.name == name || profile.name.empty()) << profile.name;
            names += profile.name == name ? 1 : 0;
            rules += RuleConfig(profile.id, "com.varlo.rule.r") == DocumentOf(profile.id) ? 1 : 0;
        }
        return {names, rules};
    }
};

TEST_F(DamageTest, ASoundStoreIsLeftAlone)
{
    m_manager.reset();
    EXPECT_EQ(RecoverStore(), "the profile store " + m_database + " is sound; nothing was changed");
    Fill();
    Restore();
    const auto before = Files();
    EXPECT_EQ(RecoverStore(), "the profile store " + m_database + " is sound; nothing was changed");
    EXPECT_EQ(Files().at("profiles.db"), before.at("profiles.db"));
    EXPECT_EQ(Saved(), std::pair(kProfiles - 1, kProfiles - 1));
    m_manager.reset();
    std::filesystem::remove_all(Path("state"));
    EXPECT_THAT(RecoverStore(), HasSubstr("there is no profile store in " + Path("state") + " yet"));
}

// One page after the other is lost. What was on the others is saved.
TEST_F(DamageTest, AnyPageMayBeLost)
{
    Fill();
    const std::size_t pages = std::filesystem::file_size(Path("filled/profiles.db")) / kPage;
    ASSERT_GT(pages, 40u);
    for (const char filler : {'\0', '\x5a'})
        for (std::size_t page = 0; page < pages; page += page < 8 ? 1 : 13)
        {
            SCOPED_TRACE("page " + std::to_string(page + 1));
            Restore();
            Overwrite(page * kPage, std::string(kPage, filler));
            const std::string damaged = Files().at("profiles.db");
            const std::string fault = AnalyticsFaultOf([&] { Open(); });
            EXPECT_EQ(Files().at("profiles.db"), damaged);
            if (fault == kNoFault) // a text of one document, which only its reader can judge
            {
                m_manager.reset();
                continue;
            }
            EXPECT_THAT(fault, HasSubstr("it is damaged; restore the folder from a backup, or start the "
                                         "service with --recover"));
            const std::string report = RecoverStore();
            EXPECT_THAT(report, AllOf(StartsWith("the profile store " + m_database + " was damaged; saved "),
                                      HasSubstr("kept as " + m_database + ".damaged-1")));
            EXPECT_EQ(Files().at("profiles.db.damaged-1"), damaged);
            const auto [names, rules] = Saved();
            EXPECT_GE(names + rules, 2 * (kProfiles - 1) - 60) << report;
            EXPECT_GT(Create("next"), kProfiles) << report;
            m_manager.reset();
            EXPECT_THAT(RecoverStore(), HasSubstr("is sound"));
        }
}

// Single bytes of the header and of the schema.
TEST_F(DamageTest, AnyByteOfTheFirstPageMayBeWrong)
{
    Fill();
    int damaged = 0;
    for (const std::size_t at : std::initializer_list<std::size_t>{0, 15, 16, 18, 20, 21, 31, 36, 44, 47, 59,
                                                                   60, 63, 100, 101, 103, 104, 105, 107})
    {
        SCOPED_TRACE("byte " + std::to_string(at));
        Restore();
        const char was = Files().at("profiles.db")[at];
        Overwrite(at, std::string(1, static_cast<char>(was ^ 0x41)));
        const std::string fault = AnalyticsFaultOf([&] { Open(); });
        m_manager.reset();
        if (fault == kNoFault || fault.find("newer version") != std::string::npos)
            continue;
        ++damaged;
        ASSERT_THAT(fault, HasSubstr("it is damaged"));
        ASSERT_THAT(RecoverStore(), HasSubstr("saved 59 profiles and 59 configurations; lost: nothing"));
        EXPECT_EQ(Saved(), std::pair(kProfiles - 1, kProfiles - 1));
        EXPECT_EQ(Active(), 5);
        EXPECT_TRUE(m_manager->GetMDActiveState());
        EXPECT_EQ(m_manager->GetCameraPreset(3), "preset");
        EXPECT_EQ(ActiveRules(4), std::vector<std::string>{"com.varlo.rule.r"});
        EXPECT_THAT(ActiveRules(5), IsEmpty());
        EXPECT_EQ(Create("next"), kProfiles + 3) << "deleted profiles had the two before it";
    }
    EXPECT_GT(damaged, 8);
}

TEST_F(DamageTest, TheEndMayBeMissing)
{
    Fill();
    const auto size = std::filesystem::file_size(Path("filled/profiles.db"));
    for (const auto left : {size - kPage, size / 2, kPage + 1, kPage, std::size_t{100}})
    {
        Restore();
        std::filesystem::resize_file(m_database, left);
        EXPECT_THAT(AnalyticsFaultOf([&] { Open(); }), HasSubstr("it is damaged")) << left;
        EXPECT_THAT(RecoverStore(), HasSubstr("was damaged; saved ")) << left;
        Saved();
    }
}

TEST_F(DamageTest, NothingAtAllMayBeLeft)
{
    m_manager.reset();
    Write("state/profiles.db", std::string(10'000, 'x'));
    EXPECT_THAT(
        RecoverStore(),
        HasSubstr("saved 0 profiles and 0 configurations; lost: which profile was active and what was "
                  "switched on"));
    Open();
    EXPECT_THAT(Names(), IsEmpty());
    // Once more: no file of an earlier recovery is lost.
    m_manager.reset();
    Write("state/profiles.db", std::string(10'000, 'y'));
    EXPECT_THAT(RecoverStore(), HasSubstr(".damaged-2"));
    EXPECT_EQ(Files().at("profiles.db.damaged-1"), std::string(10'000, 'x'));
    EXPECT_EQ(Files().at("profiles.db.damaged-2"), std::string(10'000, 'y'));
}

// ---- With a log ----

class DamagedLogTest : public DamageTest
{
  protected:
    // A store as SIGKILL leaves it: all in the log but the first page, or only what came last.
    void Build(bool onlyLast = false)
    {
        m_manager.reset();
        faulty::Install();
        std::filesystem::remove_all(Path("state"));
        Open();
        for (int id = 1; id <= 10; ++id)
        {
            Create("profile " + std::to_string(id));
            m_manager->SetRuleConfig(id, "com.varlo.rule.r", DocumentOf(id), false);
        }
        if (onlyLast)
            Reopen();
        m_manager->SetCameraPreset(3, "late");
        std::filesystem::create_directory(Path("filled"));
        for (const char* name : {"/profiles.db", "/profiles.db-wal"})
            std::filesystem::copy_file(Path("state") + name, Path("filled") + name);
        Restore();
    }
};

TEST_F(DamagedLogTest, TheLogIsReadWithTheFileAndKeptBesideIt)
{
    Build(true);
    Overwrite(0, std::string(100, 'x'));
    const auto before = Files();
    EXPECT_THAT(AnalyticsFaultOf([&] { Open(); }), HasSubstr("it is damaged"));
    EXPECT_EQ(Files().at("profiles.db"), before.at("profiles.db"));
    EXPECT_EQ(Files().at("profiles.db-wal"), before.at("profiles.db-wal"));
    EXPECT_THAT(RecoverStore(), HasSubstr("saved 10 profiles and 10 configurations; lost: nothing"));
    EXPECT_EQ(Files().at("profiles.db.damaged-1"), before.at("profiles.db"));
    EXPECT_EQ(Files().at("profiles.db.damaged-1-wal"), before.at("profiles.db-wal"));
    EXPECT_EQ(Saved(), std::pair(10, 10));
    EXPECT_EQ(m_manager->GetCameraPreset(3), "late");
}

TEST_F(DamagedLogTest, TheLogAloneIsEnough)
{
    Build();
    for (const bool removed : {true, false})
    {
        Restore();
        if (removed)
            std::filesystem::remove(m_database);
        else
            std::filesystem::resize_file(m_database, 0);
        EXPECT_THAT(AnalyticsFaultOf([&] { Open(); }), HasSubstr("it is damaged"));
        EXPECT_THAT(RecoverStore(), HasSubstr("saved 10 profiles and 10 configurations; lost: nothing"));
        EXPECT_EQ(Saved(), std::pair(10, 10));
    }
}

// What stands behind a damaged frame can't be told from what was never finished.
TEST_F(DamagedLogTest, ADamagedLogCountsUpToTheDamage)
{
    Build();
    const std::size_t size = Files().at("profiles.db-wal").size();
    int last = 11;
    for (std::size_t at = size - 1; at > 5 * kPage; at -= 7 * kPage / 2)
    {
        Restore();
        Overwrite(at, "\xa5", "-wal");
        std::filesystem::remove(m_database);
        RecoverStore();
        const auto [names, rules] = Saved();
        EXPECT_LE(names, last);
        EXPECT_LE(rules, names);
        last = names;
    }
    EXPECT_LT(last, 10);
}

TEST_F(DamagedLogTest, ARecoveryThatWasCutOffIsBroughtToItsEnd)
{
    Build();
    Open();
    m_manager.reset(); // all in one file
    std::filesystem::rename(m_database, m_database + ".recovered");
    std::filesystem::copy_file(Path("filled/profiles.db-wal"), m_database + "-wal");
    Write("state/profiles.db", "damaged");
    EXPECT_EQ(Saved(), std::pair(10, 10));
    m_manager.reset();
    EXPECT_EQ(Files().at("profiles.db.damaged-1"), "damaged");
    EXPECT_EQ(Files().count("profiles.db.damaged-1-wal"), 1u);
    EXPECT_EQ(Files().count("profiles.db.recovered"), 0u);
}
