#include "Session.h"

#include "Failure.h"
#include "Model.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <limits>

namespace client
{
namespace
{

std::optional<int> Identifier(const std::string& text)
{
    const std::optional<long long> number = Integer(text);
    if (!number || *number < 0 || *number > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(*number);
}

[[noreturn]] void RefuseProfile(const std::string& why)
{
    throw Failure(Exit::Refused, why + ". 'varlo-analytics profile list' shows the profiles that exist");
}

} // namespace

const Access& Session::Ready()
{
    if (m_ready)
        return access;
    access.url = WholeUrl(access.url);
    if (!access.user.empty())
        access.password = ReadPassword(access.user, passwordFile);
    m_ready = true;
    return access;
}

Service& Session::Service()
{
    if (m_service == nullptr)
        m_service = std::make_unique<client::Service>(Ready());
    return *m_service;
}

Profile ExistingProfile(Service& service, const std::string& text)
{
    const std::optional<int> id = Identifier(text);
    std::optional<Profile> found;
    for (const Profile& profile : service.Profiles())
    {
        if (id ? profile.id != *id : profile.name != text)
            continue;
        if (found)
            RefuseProfile("More than one profile is named '" + text + "': say which one by its number");
        found = profile;
    }
    if (!found)
        RefuseProfile(id ? "Profile " + std::to_string(*id) + " does not exist"
                         : "No profile is named '" + text + "'");
    return *found;
}

int ProfileId(Service& service, const std::string& text)
{
    if (const std::optional<int> id = Identifier(text))
        return *id;
    return ExistingProfile(service, text).id;
}

CLI::App* AddCommand(CLI::App& parent, Session& session, const std::string& name,
                     const std::string& description, const std::string& examples, std::function<void()> run)
{
    CLI::App* const command = parent.add_subcommand(name, description);
    command->footer("Examples:\n" + examples + "\nOptions for all commands: varlo-analytics --help");
    command->callback([&session, run = std::move(run)] { session.run = run; });
    return command;
}

void AddStrict(CLI::App& command, Session& session)
{
    command.add_flag("--strict", session.strict, "Send nothing if there is a warning about a document");
}

} // namespace client
