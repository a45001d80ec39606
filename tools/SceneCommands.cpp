#include "Documents.h"
#include "Editor.h"
#include "ExplainCommand.h"
#include "Failure.h"
#include "Scene.h"
#include "Session.h"
#include "Text.h"
#include "documents/Example.h"
#include "documents/Models.h"

#include <CLI/CLI.hpp>

namespace client
{
namespace
{

struct SceneArguments
{
    std::string profile;
    std::string file = "-";
    std::string name;
};

Record About(int profile) { return {{"profile", static_cast<long long>(profile)}}; }

void Get(Session& session, const SceneArguments& arguments)
{
    const Profile profile = ExistingProfile(session.Service(), arguments.profile);
    const std::optional<std::string> scene = SceneOf(session.Service(), profile.id);
    if (!scene && !session.json)
        throw Failure(Exit::Refused,
                      "Profile " + std::to_string(profile.id) +
                          " has no scene yet. 'varlo-analytics scene default' gives one to start from");
    session.Out().Document(About(profile.id), &SceneModel(), scene.value_or(""));
}

void Store(Session& session, const SceneArguments& arguments, const Source& source)
{
    const std::string document = Checked(source, &SceneModel(), session.Checks());
    Service& service = session.Service();
    const Profile profile = ExistingProfile(service, arguments.profile);
    service.SetScene(profile.id, document);
    const std::vector<Change> changes = ChangesIn(&SceneModel(), document, service.Scene(profile.id));
    session.Out().Report(About(profile.id),
                         "Profile " + std::to_string(profile.id) + " has stored the scene" +
                             (changes.empty() ? " as it was sent." : ". This came back different:"),
                         "differences", Listed(changes));
}

void Set(Session& session, const SceneArguments& arguments)
{
    Store(session, arguments, ReadSource(arguments.file));
}

void EditScene(Session& session, const SceneArguments& arguments)
{
    Service& service = session.Service();
    const Profile profile = ExistingProfile(service, arguments.profile);
    const std::optional<std::string> stored = SceneOf(service, profile.id);
    const auto store = [&](const Source& source) { Store(session, arguments, source); };
    if (!Edit("scene", Readable(stored ? *stored : service.DefaultScene()) + '\n', store))
        session.Out().Result(About(profile.id), "Nothing has been changed.");
}

void Default(Session& session)
{
    const std::string document = session.Service().DefaultScene();
    if (Trimmed(document).empty() && !session.json)
        throw Failure(Exit::Refused, "The service delivers no default scene. Look at its plug-ins");
    session.Out().Document({}, &SceneModel(), document);
}

void Rename(Session& session, const SceneArguments& arguments)
{
    Service& service = session.Service();
    const Profile profile = ExistingProfile(service, arguments.profile);
    CheckProfileName(arguments.name);
    const std::optional<std::string> scene = SceneOf(service, profile.id);
    service.SetScene(profile.id, RenamedScene(scene ? *scene : service.DefaultScene(), arguments.name));
    Record record = About(profile.id);
    record.emplace_back("name", arguments.name);
    session.Out().Result(record, "Profile " + std::to_string(profile.id) + " is named '" + arguments.name +
                                     "'" +
                                     (scene ? "." : " and has the default scene now; it had none before."));
}

void ShowExample(Session& session)
{
    session.Out().Document({}, &SceneModel(), Example(SceneModel(), session.Frame()));
}

using SceneAction = void (*)(Session&, const SceneArguments&);

CLI::App* Add(CLI::App& group, Session& session, const std::string& name, const std::string& description,
              const std::string& examples, SceneAction action, std::shared_ptr<SceneArguments> arguments)
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
        "  varlo-analytics scene get \"Car park\" >scene.xml", Get, std::make_shared<SceneArguments>());

    const auto set = std::make_shared<SceneArguments>();
    CLI::App* const command =
        Add(*group, session, "set", "Check and store a scene document, and tell what came back different",
            "  varlo-analytics scene set \"Car park\" scene.xml", Set, set);
    command->add_option("FILE", set->file, "The document; standard input without it, or with -");
    AddChecks(*command, session);
    AddChecks(*Add(*group, session, "edit", "Change the scene in an editor, check it and store it",
                   "  varlo-analytics scene edit \"Car park\"", EditScene,
                   std::make_shared<SceneArguments>()),
              session);

    AddCommand(*group, session, "example",
               "Write a full scene to standard output, without asking the service",
               "  varlo-analytics scene example >scene.xml", [&session] { ShowExample(session); });
    const auto field = std::make_shared<std::string>();
    AddCommand(*group, session, "explain",
               "Tell what the fields of a scene mean, their units, advised values and defaults",
               "  varlo-analytics scene explain\n  varlo-analytics scene explain tuning",
               [&session, field] { Explain(session, SceneModel(), *field); })
        ->add_option("FIELD", *field, "One of them");

    AddCommand(*group, session, "default", "Write the service's default scene to standard output",
               "  varlo-analytics scene default >scene.xml", [&session] { Default(session); });

    const auto rename = std::make_shared<SceneArguments>();
    Add(*group, session, "rename", "Give a profile another name, which is part of its scene",
        "  varlo-analytics scene rename \"Car park\" \"Car park, night\"", Rename, rename)
        ->add_option("NAME", rename->name, "The new name, 255 bytes at most")
        ->required();
}

} // namespace client
