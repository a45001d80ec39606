#include "Behaviors.h"
#include "Failure.h"
#include "Session.h"

#include <CLI/CLI.hpp>

namespace client
{
namespace
{

struct AvailabilityArguments
{
    std::string profile;
    std::vector<std::string> with;
};

std::string Word(State state)
{
    switch (state)
    {
    case State::Unavailable:
        return "unavailable";
    case State::Available:
        return "available";
    case State::Active:
        return "active";
    }
    return std::to_string(static_cast<int>(state));
}

std::vector<Behavior> Ask(Session& session, const AvailabilityArguments& arguments)
{
    if (!arguments.with.empty())
    {
        std::vector<std::string> ids;
        for (const std::string& behavior : arguments.with)
            ids.push_back(BehaviorId(behavior));
        return session.Service().Availability(ids);
    }
    if (arguments.profile.empty())
        return session.Service().Availability(std::nullopt);
    return session.Service().Availability(ExistingProfile(session.Service(), arguments.profile).id);
}

void Show(Session& session, const AvailabilityArguments& arguments)
{
    List list{{{"behavior", "BEHAVIOR"},
               {"name", "NAME"},
               {"availability", "AVAILABILITY"},
               {"fixedPosition", "STILL CAMERA"},
               {"advancedMode", "ADVANCED MODE"},
               {"hidden", "HIDDEN"},
               {"id", ""}},
              {}};
    for (const Behavior& behavior : Ask(session, arguments))
        list.rows.push_back({BehaviorCalled(behavior.id), behavior.name, Word(behavior.state),
                             behavior.stillCamera, behavior.advancedMode, behavior.hidden, behavior.id});
    session.Out().Table(list,
                        "The service has no behaviors that a user can configure. Look at its plug-ins.");
}

} // namespace

void AddAvailabilityCommand(CLI::App& app, Session& session)
{
    auto arguments = std::make_shared<AvailabilityArguments>();
    CLI::App* const command = AddCommand(
        app, session, "availability", "Tell which behaviors are active and which can still be selected",
        "  varlo-analytics availability\n  varlo-analytics availability \"Car park\"\n"
        "  varlo-analytics availability --with loitering object-counting",
        [&session, arguments] { Show(session, *arguments); });
    CLI::Option* const profile = command->add_option("PROFILE", arguments->profile,
                                                     "Number or name; without it, as if nothing were active");
    command->add_option("--with", arguments->with, "As if these behaviors were active")
        ->type_name("BEHAVIOR")
        ->excludes(profile);
}

} // namespace client
