#include "Session.h"

#include <CLI/CLI.hpp>

namespace client
{
namespace
{

void ShowProfiles(Session& session)
{
    List list{{{"id", "ID"}, {"name", "NAME"}, {"active", "RUNS"}, {"preset", "PRESET"}}, {}};
    for (const Profile& profile : session.Service().Profiles())
        list.rows.push_back(
            {static_cast<long long>(profile.id), profile.name, profile.active, profile.preset});
    session.Out().Table(list, "There are no profiles. 'varlo-analytics profile create NAME' makes one.");
}

void Create(Session& session, const std::string& name)
{
    CheckProfileName(name);
    const int id = session.Service().CreateProfile(name);
    session.Out().Result({{"id", static_cast<long long>(id)}, {"name", name}},
                         "Profile " + std::to_string(id) + " '" + name + "' has been created.");
}

void ShowActive(Session& session)
{
    const std::optional<int> id = session.Service().ActiveProfile();
    session.Out().Result({{"id", id ? Value(static_cast<long long>(*id)) : Value()}},
                         id ? "Profile " + std::to_string(*id) + " runs." : "No profile runs.");
}

void Delete(Session& session, const std::vector<std::string>& profiles)
{
    // First all are looked up, so that a wrong name changes nothing.
    std::vector<int> ids;
    for (const std::string& profile : profiles)
        ids.push_back(ProfileId(session.Service(), profile));
    for (const int id : ids)
    {
        session.Service().DeleteProfile(id);
        session.Out().Result({{"id", static_cast<long long>(id)}},
                             "Profile " + std::to_string(id) + " has been deleted.");
    }
}

void Run(Session& session, const std::string& profile)
{
    const int id = ProfileId(session.Service(), profile);
    session.Service().RunProfile(id);
    session.Out().Result({{"id", static_cast<long long>(id)}}, "Profile " + std::to_string(id) + " runs.");
}

void Stop(Session& session, const std::string& profile)
{
    if (profile.empty())
    {
        session.Service().StopProfile(std::nullopt);
        session.Out().Result({{"id", Value()}}, "No profile runs.");
        return;
    }
    const int id = ProfileId(session.Service(), profile);
    session.Service().StopProfile(id);
    session.Out().Result({{"id", static_cast<long long>(id)}},
                         "Profile " + std::to_string(id) + " doesn't run.");
}

} // namespace

void AddProfileCommands(CLI::App& app, Session& session)
{
    CLI::App* const group = app.add_subcommand("profile", "List, create, delete, run and stop profiles");
    group->require_subcommand(1);
    group->footer("A PROFILE is the number of a profile, or its name if no other profile has it.");

    AddCommand(*group, session, "list", "List all profiles",
               "  varlo-analytics profile list\n"
               "  varlo-analytics --url http://192.168.0.90:8080/ profile list --json",
               [&session] { ShowProfiles(session); });

    auto name = std::make_shared<std::string>();
    AddCommand(*group, session, "create", "Create an empty profile",
               "  varlo-analytics profile create \"Car park\"", [&session, name] { Create(session, *name); })
        ->add_option("NAME", *name, "Name of the profile, 255 bytes at most")
        ->required();

    auto profiles = std::make_shared<std::vector<std::string>>();
    CLI::App* const deleting =
        AddCommand(*group, session, "delete", "Delete profiles; one that runs is stopped first",
                   "  varlo-analytics profile delete 3\n  varlo-analytics profile delete \"Car park\" Night",
                   [&session, profiles] { Delete(session, *profiles); });
    TakeWords(deleting->add_option("PROFILE", *profiles, "Number or name"))->required();

    auto run = std::make_shared<std::string>();
    AddCommand(*group, session, "run", "Run a profile; the one that ran is stopped",
               "  varlo-analytics profile run \"Car park\"", [&session, run] { Run(session, *run); })
        ->add_option("PROFILE", *run, "Number or name")
        ->required();

    auto stop = std::make_shared<std::string>();
    CLI::App* const stopping = AddCommand(*group, session, "stop", "Stop a profile, or whichever runs",
                                          "  varlo-analytics profile stop\n  varlo-analytics profile stop 3",
                                          [&session, stop] { Stop(session, *stop); });
    stopping->add_option("PROFILE", *stop, "Number or name");

    AddCommand(*group, session, "active", "Tell which profile runs", "  varlo-analytics profile active",
               [&session] { ShowActive(session); });
}

} // namespace client
