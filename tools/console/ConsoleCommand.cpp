#include "Failure.h"
#include "Hosts.h"
#include "Session.h"
#include "console/Console.h"

#include <CLI/CLI.hpp>

#include <spawn.h>
#include <sys/wait.h>

#include <cstdio>
#include <thread>

namespace client
{
namespace
{

struct ConsoleArguments
{
    std::string hosts;
    std::string picture;
    unsigned short port = 0;
    bool open = false;
};

// The desktop's browser, which goes its own way.
void OpenBrowser(const std::string& url)
{
    std::string program = "xdg-open";
    std::string address = url;
    char* const words[] = {program.data(), address.data(), nullptr};
    pid_t child = 0;
    if (const int error = posix_spawnp(&child, words[0], nullptr, nullptr, words, environ); error != 0)
    {
        std::fprintf(stderr, "varlo-analytics: xdg-open can't be started. Open the address yourself.\n");
        return;
    }
    std::thread([child] { waitpid(child, nullptr, 0); }).detach();
}

std::vector<ConsoleCamera> Cameras(Session& session, const ConsoleArguments& arguments)
{
    if (arguments.hosts.empty())
        return {{session.Ready(), session.Frame()}};
    std::vector<ConsoleCamera> cameras;
    for (const Target& host : TargetsOf(ReadHosts(arguments.hosts), {session.Ready(), session.Frame(), {}}))
        cameras.push_back({host.access, host.frame});
    return cameras;
}

void Serve(Session& session, const ConsoleArguments& arguments)
{
    if (!arguments.hosts.empty())
        session.RefuseCamera();
    const std::vector<ConsoleCamera> cameras = Cameras(session, arguments);
    std::optional<Picture> picture;
    if (!arguments.picture.empty())
    {
        picture.emplace(arguments.picture, cameras.front().access);
        picture->Read();
    }
    Console console(cameras, !arguments.hosts.empty(), picture);
    WebServer server(arguments.port, [&console](const auto& method, const auto& target, const auto& body)
                     { return console.Answer(method, target, body); });
    std::printf("console on %s\n", server.Url().c_str());
    std::fflush(stdout);
    if (arguments.open)
        OpenBrowser(server.Url());
    server.Run();
}

} // namespace

void AddConsoleCommand(CLI::App& app, Session& session)
{
    auto arguments = std::make_shared<ConsoleArguments>();
    CLI::App* const command =
        AddCommand(app, session, "console", "Draw zones on the camera's picture, on a page in the browser",
                   "  varlo-analytics console --picture car-park.png --open\n"
                   "  varlo-analytics console --hosts cameras.txt --picture http://192.168.0.90/snapshot.jpg",
                   [&session, arguments] { Serve(session, *arguments); });
    command
        ->add_option("--hosts", arguments->hosts, "File with an address in each line; the page chooses one")
        ->type_name("FILE");
    command
        ->add_option("--picture", arguments->picture, "JPEG or PNG picture to draw on, a file or an address")
        ->type_name("FILE|URL");
    command->add_option("--port", arguments->port, "Port of 127.0.0.1 for the page; else a free one")
        ->type_name("N")
        ->check(CLI::Range(1, 65535));
    command->add_flag("--open", arguments->open, "Open the page in the desktop's browser");
}

} // namespace client
