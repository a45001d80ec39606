#include "FaultFixture.h"

#include <SQLiteCpp/SQLiteCpp.h>

using analytics::ProfileManager;

namespace
{
// Of several pages.
std::string Large(char letter) { return "<d>" + std::string(20'000, letter) + "</d>"; }
} // namespace

const std::vector<FaultFixture::Operation> FaultFixture::kChanges = {
    {"CreateProfile",
     [](ProfileManager& m)
     {
         int id = -1;
         m.CreateProfile(id, "new");
     }},
    {"SetRuleConfig", [](ProfileManager& m) { m.SetRuleConfig(2, "r", Large('n'), true); }},
    {"SetEngineConfig", [](ProfileManager& m) { m.SetEngineConfig(1, "e", "<new/>", "renamed", "preset"); }},
    {"ExecuteProfile", [](ProfileManager& m) { m.ExecuteProfile(2); }},
    {"StopProfile", [](ProfileManager& m) { m.StopProfile(-1); }},
    {"AlgorithmControl", [](ProfileManager& m) { m.AlgorithmControl(3); }},
    {"DeleteRule", [](ProfileManager& m) { m.DeleteRule(1, "r"); }},
    {"DeleteProfile", [](ProfileManager& m) { m.DeleteProfile(1); }},
};

FaultFixture::FaultFixture()
{
    m_manager.reset();
    faulty::Install();
    std::filesystem::remove_all(Path("state"));
    Open();
    Create("a");
    Create("b");
    m_manager->SetRuleConfig(1, "r", Large('r'), true);
    m_manager->SetEngineConfig(1, "e", "<e/>");
    m_manager->ExecuteProfile(1);
    m_manager.reset();
    std::filesystem::rename(Path("state"), Path("filled"));
    Restore();
}

FaultFixture::~FaultFixture()
{
    faulty::OnWrite(nullptr);
    faulty::Heal();
}

void FaultFixture::Restore()
{
    m_manager.reset();
    std::filesystem::remove_all(Path("state"));
    std::filesystem::copy(Path("filled"), Path("state"));
    Open();
}

std::string FaultFixture::Dump(ProfileManager& manager)
{
    std::vector<analytics::ProfileSummary> list;
    manager.GetProfileList(list);
    std::string dump = manager.GetMDActiveState() ? "MD\n" : "\n";
    for (const auto& profile : list)
    {
        std::string rule = "(none)";
        std::string engine = "(none)";
        manager.GetRuleConfig(profile.id, "r", rule);
        manager.GetEngineConfig(profile.id, "e", engine);
        dump += std::to_string(profile.id) + profile.name + "|" + profile.preset +
                (profile.active ? "|active|" : "|") + rule + engine + "\n";
    }
    return dump;
}

void FaultFixture::CopyStore(const std::string& folder) const
{
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    for (const char* name : {"profiles.db", "profiles.db-journal", "profiles.db-wal"})
        if (std::filesystem::exists(Path("state") + "/" + name))
            std::filesystem::copy_file(Path("state") + "/" + name, folder + "/" + name);
}

std::string FaultFixture::DumpOf(const std::string& folder)
{
    const std::string state = m_configuration.stateFolder;
    m_configuration.stateFolder = folder;
    Configure();
    m_configuration.stateFolder = state;
    std::string dump;
    {
        ProfileManager manager;
        dump = Dump(manager);
    }
    Configure();
    SQLite::Database database(folder + "/profiles.db");
    EXPECT_EQ(database.execAndGet("PRAGMA integrity_check").getString(), "ok");
    return dump;
}

std::string FaultFixture::DumpAfterKill()
{
    CopyStore(Path("killed"));
    return DumpOf(Path("killed"));
}
