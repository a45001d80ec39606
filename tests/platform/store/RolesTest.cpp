// Who may change what, decided where the store is changed.

#include "metrics/Metrics.h"
#include "platform/store/StoreFixture.h"
#include "request/Request.h"

using analytics::ProfileManager;
using analytics::platform::Caller;
using analytics::platform::RequestScope;
using analytics::platform::Role;

namespace
{
struct Operation
{
    const char* name;
    Role needed;
    std::function<void(ProfileManager&, int profile)> run;
};

const Operation kOperations[] = {
    {"CreateProfile", Role::Administrator,
     [](ProfileManager& m, int)
     {
         int id = -1;
         m.CreateProfile(id, "new");
     }},
    {"DeleteProfile", Role::Administrator, [](ProfileManager& m, int p) { m.DeleteProfile(p); }},
    {"ExecuteProfile", Role::Operator, [](ProfileManager& m, int p) { m.ExecuteProfile(p); }},
    {"StopProfile", Role::Operator, [](ProfileManager& m, int p) { m.StopProfile(p); }},
    {"StopProfile of any", Role::Operator, [](ProfileManager& m, int) { m.StopProfile(-1); }},
    {"AlgorithmControl", Role::Operator, [](ProfileManager& m, int) { m.AlgorithmControl(3); }},
    {"SetProfileName", Role::Administrator, [](ProfileManager& m, int p) { m.SetProfileName(p, "other"); }},
    {"SetCameraPreset", Role::Administrator, [](ProfileManager& m, int p) { m.SetCameraPreset(p, "other"); }},
    {"SetRuleConfig", Role::Administrator,
     [](ProfileManager& m, int p) { m.SetRuleConfig(p, "r", "<new/>", false); }},
    {"SetRuleConfig with an engine", Role::Administrator,
     [](ProfileManager& m, int p)
     {
         m.SetEngineConfig(p, "e", "<new/>");
         m.SetRuleConfig(p, "r", "<new/>", false);
     }},
    {"DeleteRule", Role::Administrator, [](ProfileManager& m, int p) { m.DeleteRule(p, "r"); }},
    {"SetEngineConfig", Role::Administrator,
     [](ProfileManager& m, int p) { m.SetEngineConfig(p, "e", "<new/>"); }},
    {"SetEngineConfig with a name", Role::Administrator,
     [](ProfileManager& m, int p) { m.SetEngineConfig(p, "e", "<new/>", "other", "other"); }},
    {"DeleteEngine", Role::Administrator, [](ProfileManager& m, int p) { m.DeleteEngine(p, "e"); }},
    {"AddRule", Role::Administrator, [](ProfileManager& m, int p) { m.AddRule(p, "q"); }},
    {"AddEngine", Role::Administrator, [](ProfileManager& m, int p) { m.AddEngine(p, "q"); }},
};
} // namespace

class RolesTest : public StoreFixture
{
  protected:
    // Profile 1 active with a rule and an engine, as a client finds it.
    void Fill()
    {
        m_manager.reset();
        std::filesystem::remove_all(Path("state"));
        Open();
        Create("kept");
        m_manager->SetRuleConfig(1, "r", "<r/>", true);
        m_manager->SetEngineConfig(1, "e", "<e/>");
        m_manager->ExecuteProfile(1);
    }
    std::string Dump() const
    {
        std::string dump = std::to_string(Active()) + (m_manager->GetMDActiveState() ? " MD " : " ");
        for (const auto& profile : List())
            dump += std::to_string(profile.id) + profile.name + profile.preset + RuleConfig(profile.id, "r") +
                    EngineConfig(profile.id, "e") + std::to_string(ActiveRules(profile.id).size());
        return dump;
    }
    // What the operation is refused with in a request of the caller.
    std::string FaultFor(const Caller& caller, const Operation& operation, int profile)
    {
        const RequestScope request(caller);
        return ClientFaultOf([&] { operation.run(*m_manager, profile); });
    }
};

TEST_F(RolesTest, WhoMayNotChangesNothing)
{
    Fill();
    const std::string before = Dump();
    for (const Operation& operation : kOperations)
        for (const Role role : {Role::Viewer, Role::Operator})
            for (const char* name : {"guard", "CN=wall-display", ""})
            {
                if (role >= operation.needed)
                    continue;
                const std::uint64_t refused = analytics::platform::gRefusedByRole.Value();
                const std::string expected =
                    (*name == '\0' ? "Nobody" : std::string(name)) + (operation.needed == Role::Operator
                                                                          ? " may not run or stop anything"
                                                                          : " may not change profiles");
                EXPECT_EQ(FaultFor({name, role, "", ""}, operation, 1), expected) << operation.name;
                EXPECT_EQ(FaultFor({name, role, "", ""}, operation, 9), expected) << operation.name;
                EXPECT_EQ(Dump(), before) << operation.name;
                EXPECT_EQ(analytics::platform::gRefusedByRole.Value(), refused + 2);
            }
}

TEST_F(RolesTest, WhoMayChangesWhatItSays)
{
    for (const Operation& operation : kOperations)
        for (const Role role : {Role::Operator, Role::Administrator})
        {
            const std::string name = operation.name;
            if (role < operation.needed || name.starts_with("Add")) // there is no such plug-in
                continue;
            Fill();
            const std::string before = Dump();
            EXPECT_EQ(FaultFor({"somebody", role, "", ""}, operation, 1), "(no fault)") << name;
            EXPECT_EQ(Dump() == before, name == "ExecuteProfile") << name;
        }
}

TEST_F(RolesTest, EveryoneReads)
{
    Fill();
    const std::string all = Dump();
    const Caller caller = {"guard", Role::Viewer, "", ""};
    const RequestScope request(caller);
    EXPECT_EQ(Dump(), all);
    EXPECT_NO_THROW(m_manager->GetConfig(1));
}

TEST_F(RolesTest, WithoutACallerAllIsAllowed)
{
    const RequestScope request;
    EXPECT_EQ(Create(), 1);
}
