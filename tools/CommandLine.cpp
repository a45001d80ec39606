#include "CommandLine.h"

#include "Failure.h"
#include "Json.h"
#include "Session.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace client
{
namespace
{

constexpr char kFooter[] = R"(Examples:
  varlo-analytics profile create "Car park"
  varlo-analytics behavior example loitering | varlo-analytics behavior set "Car park" loitering
  varlo-analytics profile run "Car park"
  varlo-analytics availability "Car park"
  varlo-analytics --url https://camera.example/ --user admin --cacert ca.pem profile list

Environment:
  VARLO_ANALYTICS_URL       the address, if neither --url nor --camera is given
  VARLO_ANALYTICS_FRAME     the frame, if neither --frame nor the camera gives one
  VARLO_ANALYTICS_PASSWORD  the password of --user, if --password-file isn't given; without
                            either it is asked for at the terminal

Exit codes:
  0  done
  1  the service has refused; of several hosts, not all could be done
  2  the command line is wrong
  3  no answer: connection, certificate, access or time
  4  a file or a document can't be used, there is an error in it, or --strict met a warning
  5  plan --exit-code: a host differs

Each command has a --help of its own, and options may stand in front of a command or behind it.)";

void AddOptions(CLI::App& app, Session& session)
{
    Access& access = session.access;
    app.add_option("--url", access.url,
                   "Address of the service, http or https; http://127.0.0.1:8080/ without one")
        ->type_name("URL");
    app.add_option("--camera", session.camera, "A camera by the name that 'camera add' gave it")
        ->type_name("NAME");
    app.add_option("--user", access.user, "User of the service; see below for the password")
        ->type_name("NAME");
    app.add_option("--password-file", session.passwordFile, "File with the password in its first line")
        ->type_name("FILE");
    app.add_option(
           "--cacert", access.authorities,
           "Authorities to trust with https, in PEM form, and lists of what they revoked; else those of the "
           "system")
        ->type_name("FILE");
    app.add_flag("--insecure", access.insecure, "Send a password over plain http to another machine");
    CLI::Option* const certificate =
        app.add_option("--cert", access.certificate, "Our certificate, in PEM form, if the service wants one")
            ->type_name("FILE");
    app.add_option("--key", access.key, "Its key, in PEM form; else it is in the file of --cert")
        ->type_name("FILE")
        ->needs(certificate);
    app.add_option_function<int>(
           "--timeout", [&access](const int& seconds) { access.timeout = std::chrono::seconds(seconds); },
           "Time for one exchange with the service")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 1800))
        ->default_str("10");
    app.add_option("--frame", session.frameText, "The picture that coordinates count in; 320x240 without one")
        ->type_name("WIDTHxHEIGHT");
    app.add_flag("--json", session.json, "Write results as JSON, and errors and warnings too");
    app.set_version_flag("--version", "varlo-analytics " VERSION);
    app.set_help_all_flag("--help-all", "Print the help of all commands and exit");
}

// What is wrong with the command line, and where to read more.
std::pair<std::string, std::string> UsageOf(const CLI::App* app, const CLI::Error& error)
{
    const CLI::App* command = app;
    while (!command->get_subcommands().empty())
        command = command->get_subcommands().front();
    const std::vector<std::string> unknown = app->remaining(true);
    std::string message;
    if (error.get_name() == "RequiredError" && !command->get_subcommands({}).empty())
    {
        message = unknown.empty() ? "A command is missing. Name one of"
                                  : "'" + unknown.front() + "' isn't a command. Name one of";
        for (const CLI::App* one : command->get_subcommands({}))
            message += " " + one->get_name();
    }
    else
        message = error.what();
    std::string path;
    for (; command != nullptr; command = command->get_parent())
        path.insert(0, command->get_name() + " ");
    return {message, "More: " + path + "--help"};
}

// An empty value, as of a script's unset variable, isn't one that was left out.
void RefuseEmptyValues(const CLI::App& app)
{
    for (const CLI::Option* const option : app.get_options())
        if (const auto& values = option->results();
            std::find(values.begin(), values.end(), "") != values.end())
            throw CLI::ValidationError(
                option->get_name(), option->get_required() ? "The value is empty. Give one"
                                                           : "The value is empty. Give one, or leave it out");
    for (const CLI::App* const command : app.get_subcommands())
        RefuseEmptyValues(*command);
}

std::string UsageMessage(const CLI::App* app, const CLI::Error& error)
{
    const auto [message, more] = UsageOf(app, error);
    return "varlo-analytics: " + Printable(message, true) + '\n' + more + '\n';
}

std::string SentenceOf(const Failure& failure)
{
    std::string sentence = failure.what();
    if (std::strchr(".?!", sentence.back()) == nullptr)
        sentence += '.';
    return sentence;
}

int Report(const Failure& failure, bool json)
{
    std::fflush(stdout);
    if (!json)
    {
        std::fprintf(stderr, "varlo-analytics: %s\n", Printable(SentenceOf(failure), true).c_str());
        return static_cast<int>(failure.Code());
    }
    Json object = Json::object();
    const auto* const document = dynamic_cast<const DocumentFailure*>(&failure);
    if (document != nullptr)
        object["file"] = document->File();
    if (document != nullptr && document->AsFinding().line > 0)
        object["line"] = document->AsFinding().line;
    object["level"] = "error";
    object["text"] = document != nullptr ? document->AsFinding().text : SentenceOf(failure);
    std::fprintf(stderr, "%s\n", JsonLine(object).c_str());
    return static_cast<int>(failure.Code());
}

// Returns the code, if all of the result has been written.
int Written(int code, bool json)
{
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return code;
    return Report(Failure(Exit::Document, "The result can't be written to standard output. "
                                          "Look whether there is room where it goes"),
                  json);
}

int Perform(Session& session)
{
    try
    {
        session.run();
    }
    catch (const Failure& failure)
    {
        return Report(failure, session.json);
    }
    catch (const std::exception& error)
    {
        return Report(Failure(Exit::Refused, error.what()), session.json);
    }
    return Written(static_cast<int>(session.exit), session.json);
}

} // namespace

int RunCommandLine(int argc, char** argv)
{
    Session session;
    CLI::App app("Creates, edits, runs and copies the analytic profiles of cameras.", "varlo-analytics");
    app.fallthrough();
    app.require_subcommand(1);
    app.footer(kFooter);
    app.failure_message(UsageMessage);
    AddOptions(app, session);
    for (const auto add :
         {AddProfileCommands, AddAvailabilityCommand, AddBehaviorCommands, AddSceneCommands,
          AddControlCommands, AddFolderCommands, AddPlanCommands, AddZoneCommands, AddShowCommand,
          AddValidateCommand, AddStatusCommand, AddCameraCommands, AddConsoleCommand})
        add(app, session);
    try
    {
        app.parse(argc, argv);
        RefuseEmptyValues(app);
    }
    catch (const CLI::ParseError& error)
    {
        // The line may have been left before its --json was read.
        const bool json = std::find(argv, argv + argc, std::string_view("--json")) != argv + argc;
        if (error.get_exit_code() == 0 || !json)
            return app.exit(error) == 0 ? Written(0, json) : static_cast<int>(Exit::Usage);
        const auto [message, more] = UsageOf(&app, error);
        return Report(Failure(Exit::Usage, message + ". " + more), true);
    }
    const int code = Perform(session);
    if (session.leaves)
        std::_Exit(code);
    return code;
}

} // namespace client
