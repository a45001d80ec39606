#include "Failure.h"
#include "Fleet.h"
#include "Hosts.h"
#include "Progress.h"
#include "Session.h"
#include "Transfer.h"

#include <CLI/CLI.hpp>

namespace client
{
namespace
{

struct Arguments
{
    std::string hosts;
    std::string folder;
    std::size_t jobs = 16;
    int seconds = 30;
    StoreOptions store;
};

// What became of one host.
struct Outcome
{
    std::string url;
    Stored stored;
    std::string error; // empty: it is done
};

Outcome ApplyTo(const std::string& url, Access access, const Arguments& arguments,
                const ProfileDocuments& documents)
{
    Outcome outcome{url, {}, ""};
    access.url = url;
    try
    {
        Service service(access, Service::Clock::now() + std::chrono::seconds(arguments.seconds));
        outcome.stored = Store(service, documents, arguments.store);
    }
    catch (const std::exception& failure)
    {
        outcome.error = failure.what();
    }
    return outcome;
}

std::string Word(const Outcome& outcome)
{
    if (!outcome.error.empty())
        return "failed";
    return outcome.stored.changes.empty() ? "done" : "done, differs";
}

std::string Line(const Outcome& outcome)
{
    return outcome.url + " " + Word(outcome) + (outcome.error.empty() ? "" : ": " + outcome.error);
}

List Listed(const std::vector<Outcome>& outcomes)
{
    List list{{{"url", "HOST"}, {"result", "RESULT"}, {"ok", ""}, {"profile", "PROFILE"}, {"error", "WHY"}},
              {}};
    for (const Outcome& outcome : outcomes)
    {
        const bool ok = outcome.error.empty();
        list.rows.push_back({outcome.url, Word(outcome), ok,
                             ok ? Value(static_cast<long long>(outcome.stored.id)) : Value(),
                             ok ? Value() : Value(outcome.error)});
    }
    return list;
}

void Apply(Session& session, const Arguments& arguments)
{
    const std::vector<std::string> hosts = ReadHosts(arguments.hosts);
    const ProfileDocuments documents = ReadFolder(arguments.folder);
    CheckAll(documents, session.strict);
    const Access access = session.Ready();
    std::vector<Outcome> outcomes(hosts.size());
    {
        const Progress progress(hosts.size());
        ForAll(
            hosts.size(), arguments.jobs,
            [&](std::size_t i) { outcomes[i] = ApplyTo(hosts[i], access, arguments, documents); },
            [&](std::size_t done, std::size_t i) { progress.Step(done, Line(outcomes[i])); });
    }
    const auto failed = std::count_if(outcomes.begin(), outcomes.end(),
                                      [](const Outcome& one) { return !one.error.empty(); });
    const auto succeeded = static_cast<long long>(outcomes.size()) - failed;
    const std::string sentence = std::to_string(succeeded) + " of " + std::to_string(outcomes.size()) +
                                 " hosts have the profile '" + documents.name + "'.";
    session.Out().Report(
        {{"name", documents.name}, {"succeeded", succeeded}, {"failed", static_cast<long long>(failed)}},
        sentence, "hosts", Listed(outcomes));
    if (failed > 0)
        throw Failure(
            Exit::Refused,
            std::to_string(failed) + (failed == 1 ? " host" : " hosts") +
                " failed. See the table for the reasons; with --replace the command can be repeated");
}

} // namespace

void AddApplyCommand(CLI::App& app, Session& session)
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* const command =
        AddCommand(app, session, "apply", "Make a profile of the files in a folder on many hosts at once",
                   "  varlo-analytics apply --hosts cameras.txt backup/car-park --replace\n"
                   "  varlo-analytics apply --hosts cameras.txt backup/car-park --jobs 4 --json",
                   [&session, arguments] { Apply(session, *arguments); });
    command->add_option("--hosts", arguments->hosts, "File with an address in each line; # begins a comment")
        ->required()
        ->type_name("FILE");
    command->add_option("DIR", arguments->folder, "A folder that 'export' has written")->required();
    command->add_option("--jobs", arguments->jobs, "How many hosts at a time")
        ->type_name("NUMBER")
        ->check(CLI::Range(1, 256))
        ->capture_default_str();
    command->add_option("--host-timeout", arguments->seconds, "Time for all that is done on one host")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 3600))
        ->capture_default_str();
    command->add_flag("--run", arguments->store.run, "Run the profile");
    command->add_flag("--replace", arguments->store.replace,
                      "Delete the profiles of the same name once it is there");
    AddStrict(*command, session);
}

} // namespace client
