#pragma once

#include "Access.h"
#include "Documents.h"
#include "Failure.h"
#include "Output.h"
#include "Service.h"

#include <functional>
#include <memory>
#include <string>

namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace client
{

// What the command line has said, and the service that it means.
struct Session
{
    Access access;
    std::string passwordFile;
    std::string camera; // its name; empty: none
    std::string frameText;
    bool json = false;
    bool strict = false;
    bool force = false;
    // That of the command line, of the camera, of VARLO_ANALYTICS_FRAME, or the usual one. Throws Failure.
    client::Frame Frame();
    // The command that was named; it is run when the whole line has been read.
    std::function<void()> run;
    // What the program's exit says of a command that has thrown nothing.
    Exit exit = Exit::Done;
    // Other threads are still at work, so that the process has to end without giving up what they use.
    bool leaves = false;

    // Connects at the first call of an operation. Throws Failure if the address or the files of the access
    // can't be used.
    client::Service& Service();
    Output Out() const { return Output(json); }
    Checking Checks() { return {Frame(), strict, force, json}; }
    // Takes what the command line leaves out from the named camera and the environment. Throws Failure.
    void TakeCamera();
    // Throws Failure (usage) if the command line names a camera, beside a file of hosts.
    void RefuseCamera() const;
    // The access, with the whole URL and the password.
    const Access& Ready();

  private:
    std::unique_ptr<client::Service> m_service;
    std::optional<client::Frame> m_frame;
    bool m_taken = false;
    bool m_ready = false;
};

// The profile that is meant: an identifier, or the name of the one profile that has it. Throws Failure.
int ProfileId(Service& service, const std::string& text);
// The same, and it exists.
Profile ExistingProfile(Service& service, const std::string& text);

// The groups of commands. Each adds what belongs to it; `session` outlives `app`.
void AddProfileCommands(CLI::App& app, Session& session);
void AddAvailabilityCommand(CLI::App& app, Session& session);
void AddBehaviorCommands(CLI::App& app, Session& session);
void AddSceneCommands(CLI::App& app, Session& session);
void AddControlCommands(CLI::App& app, Session& session);
void AddFolderCommands(CLI::App& app, Session& session);
void AddPlanCommands(CLI::App& app, Session& session);
void AddZoneCommands(CLI::App& app, Session& session);
void AddShowCommand(CLI::App& app, Session& session);
void AddValidateCommand(CLI::App& app, Session& session);
void AddStatusCommand(CLI::App& app, Session& session);
void AddCameraCommands(CLI::App& app, Session& session);
void AddConsoleCommand(CLI::App& app, Session& session);

// A command below `parent` that does `run`, with examples under its help, a line each.
CLI::App* AddCommand(CLI::App& parent, Session& session, const std::string& name,
                     const std::string& description, const std::string& examples, std::function<void()> run);
// The option takes every word that is left as it is: a list would take a word in brackets apart at its
// commas.
CLI::Option* TakeWords(CLI::Option* option);
// --strict, of a command that checks documents; and --force with it.
void AddStrict(CLI::App& command, Session& session);
void AddChecks(CLI::App& command, Session& session);

} // namespace client
