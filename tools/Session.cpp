#include "Session.h"

#include "Cameras.h"
#include "Failure.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <limits>
#include <utility>

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

std::string Variable(const char* name, const char* otherwise)
{
    const char* const value = std::getenv(name);
    return value == nullptr || *value == '\0' ? otherwise : value;
}

} // namespace

void Session::TakeCamera()
{
    if (std::exchange(m_taken, true))
        return;
    Camera said;
    said.url = access.url;
    said.user = access.user;
    said.authorities = access.authorities;
    said.certificate = access.certificate;
    said.key = access.key;
    if (!camera.empty())
    {
        const Camera named = NamedCamera(camera);
        access = AccessOf(said, AccessOf(named, access));
        if (passwordFile.empty())
            passwordFile = named.passwordFile;
        m_frame = named.frame;
    }
    if (access.url.empty())
        access.url = Variable("VARLO_ANALYTICS_URL", "http://127.0.0.1:8080/");
    if (!frameText.empty())
        m_frame = ParseFrame(frameText, "--frame");
    if (const std::string frame = Variable("VARLO_ANALYTICS_FRAME", ""); !m_frame && !frame.empty())
        m_frame = ParseFrame(frame, "VARLO_ANALYTICS_FRAME");
}

void Session::RefuseCamera() const
{
    for (const auto& [option, value] : {std::pair("--url", &access.url), {"--camera", &camera}})
        if (!value->empty())
            throw Failure(Exit::Usage,
                          "--hosts and " + std::string(option) + " both name cameras. Leave one of them out");
}

Frame Session::Frame()
{
    TakeCamera();
    return m_frame.value_or(client::Frame());
}

const Access& Session::Ready()
{
    if (m_ready)
        return access;
    TakeCamera();
    access.url = WholeUrl(access.url);
    GuardPassword(access);
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

CLI::Option* TakeWords(CLI::Option* option)
{
    constexpr int kMany = 1 << 20;
    return option->take_all()->allow_extra_args(false)->expected(kMany, -1);
}

void AddStrict(CLI::App& command, Session& session)
{
    command.add_flag("--strict", session.strict, "Send nothing if there is a warning about a document");
}

void AddChecks(CLI::App& command, Session& session)
{
    AddStrict(command, session);
    command.add_flag("--force", session.force, "Send a document although there is an error in it");
}

} // namespace client
