#include "Session.h"

#include <CLI/CLI.hpp>

namespace client
{
namespace
{

// Empty for a role that isn't known.
std::string Rights(const std::string& role)
{
    if (role == "administrator")
        return "read, run, stop and change profiles";
    if (role == "operator")
        return "read, run and stop profiles, and not change them";
    return role == "viewer" ? "read, and nothing else" : "";
}

void Show(Session& session)
{
    const Access& access = session.Ready();
    Service& service = session.Service();
    const std::vector<Profile> profiles = service.Profiles();
    const std::optional<int> active = service.ActiveProfile();
    const Identity told = service.Told();
    const auto text = [](const std::string& known) { return known.empty() ? Value() : Value(known); };
    const Record record = {{"url", access.url},
                           {"health", "ok"},
                           {"version", text(told.version)},
                           {"profiles", static_cast<long long>(profiles.size())},
                           {"active", active ? Value(static_cast<long long>(*active)) : Value()},
                           {"user", text(told.name)},
                           {"role", text(told.role)},
                           {"may", text(Rights(told.role))}};
    List list{{{"what", "WHAT"}, {"value", "VALUE"}}, {}};
    for (const auto& [what, value] : record)
        if (!std::holds_alternative<std::monostate>(value))
            list.rows.push_back({what, value});
    if (session.json)
        session.Out().Result(record, "");
    else
        session.Out().Table(list, "");
}

} // namespace

void AddStatusCommand(CLI::App& app, Session& session)
{
    AddCommand(app, session, "status",
               "Tell whether the service is well, its version, who you are to it and what you may",
               "  varlo-analytics status\n  varlo-analytics --url https://camera.example/ --user guard "
               "status --json",
               [&session] { Show(session); });
}

} // namespace client
