#include "Documents.h"
#include "Failure.h"
#include "Scene.h"
#include "Session.h"
#include "Text.h"

#include <CLI/CLI.hpp>

namespace client
{
namespace
{

struct Arguments
{
    std::string profile;
    std::string file = "-";
    std::string name;
};

Record About(int profile) { return {{"profile", static_cast<long long>(profile)}}; }

void Get(Session& session, const Arguments& arguments)
{
    const Profile profile = ExistingProfile(session.Service(), arguments.profile);
    const std::optional<std::string> scene = SceneOf(session.Service(), profile.id);
    if (!scene && !session.json)
        throw Failure(Exit::Refused,
                      "Profile " + std::to_string(profile.id) +
                          " has no scene yet. 'varlo-analytics scene default' gives one to start from");
    Record record = About(profile.id);
    if (scene)
        session.Out().Document(record, *scene);
    else
    {
        record.emplace_back("document", Value());
        session.Out().Result(record, "");
    }
}

void Set(Session& session, const Arguments& arguments)
{
    const Source source = ReadSource(arguments.file);
    CheckDocument(source, kSceneElement, Model(), false);
    Service& service = session.Service();
    const Profile profile = ExistingProfile(service, arguments.profile);
    CheckDocument(source, kSceneElement, SceneModel({service.DefaultScene()}), session.strict);
    service.SetScene(profile.id, source.text);
    const std::vector<Change> changes = ChangesIn(source, service.Scene(profile.id), kSceneElement);
    session.Out().Report(About(profile.id),
                         "Profile " + std::to_string(profile.id) + " has stored the scene" +
                             (changes.empty() ? " as it was sent." : ". This came back different:"),
                         "differences", Listed(changes));
}

void Default(Session& session)
{
    const std::string document = session.Service().DefaultScene();
    if (Trimmed(document).empty() && !session.json)
        throw Failure(Exit::Refused, "The service delivers no default scene. Look at its plug-ins");
    session.Out().Document({}, document);
}

void Rename(Session& session, const Arguments& arguments)
{
    Service& service = session.Service();
    const Profile profile = ExistingProfile(service, arguments.profile);
    if (arguments.name.empty())
        throw Failure(Exit::Usage,
                      "The new name is empty, and a profile can't lose its name. Give it another one");
    const std::optional<std::string> scene = SceneOf(service, profile.id);
    service.SetScene(profile.id, RenamedScene(scene ? *scene : service.DefaultScene(), arguments.name));
    Record record = About(profile.id);
    record.emplace_back("name", arguments.name);
    session.Out().Result(record, "Profile " + std::to_string(profile.id) + " is named '" + arguments.name +
                                     "'" +
                                     (scene ? "." : " and has the default scene now; it had none before."));
}

using Action = void (*)(Session&, const Arguments&);

CLI::App* Add(CLI::App& group, Session& session, const std::string& name, const std::string& description,
              const std::string& examples, Action action, std::shared_ptr<Arguments> arguments)
{
    CLI::App* const command = AddCommand(group, session, name, description, examples,
                                         [&session, action, arguments] { action(session, *arguments); });
    command->add_option("PROFILE", arguments->profile, "Number or name of the profile")->required();
    return command;
}

} // namespace

void AddSceneCommands(CLI::App& app, Session& session)
{
    CLI::App* const group =
        app.add_subcommand("scene", "Read and write the scene of a profile, and rename the profile");
    group->require_subcommand(1);
    Add(*group, session, "get", "Write the scene document to standard output",
        "  varlo-analytics scene get \"Car park\" >scene.xml", Get, std::make_shared<Arguments>());

    const auto set = std::make_shared<Arguments>();
    CLI::App* const command =
        Add(*group, session, "set", "Check and store a scene document, and tell what came back different",
            "  varlo-analytics scene set \"Car park\" scene.xml", Set, set);
    command->add_option("FILE", set->file, "The document; standard input without it, or with -");
    AddStrict(*command, session);

    AddCommand(*group, session, "default", "Write the service's default scene to standard output",
               "  varlo-analytics scene default >scene.xml", [&session] { Default(session); });

    const auto rename = std::make_shared<Arguments>();
    Add(*group, session, "rename", "Give a profile another name, which is part of its scene",
        "  varlo-analytics scene rename \"Car park\" \"Car park, night\"", Rename, rename)
        ->add_option("NAME", rename->name, "The new name, 255 bytes at most")
        ->required();
}

} // namespace client
