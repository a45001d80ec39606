#include "Behaviors.h"
#include "Documents.h"
#include "Editor.h"
#include "ExplainCommand.h"
#include "Failure.h"
#include "Scene.h"
#include "Session.h"
#include "StoreBehavior.h"
#include "Text.h"
#include "documents/Example.h"
#include "documents/Models.h"

#include <CLI/CLI.hpp>

namespace client
{
namespace
{

struct BehaviorArguments
{
    std::string profile;
    std::string behavior;
    std::string file = "-";
    std::string field;
};

Record About(int profile, const std::string& id)
{
    return {{"profile", static_cast<long long>(profile)}, {"behavior", BehaviorCalled(id)}, {"id", id}};
}

void Get(Session& session, const BehaviorArguments& arguments)
{
    const std::string id = BehaviorId(arguments.behavior);
    const int profile = ProfileId(session.Service(), arguments.profile);
    const std::string document = session.Service().ProfileBehavior(profile, id);
    if (Trimmed(document).empty() && !session.json)
        throw Failure(Exit::Refused,
                      "Profile " + std::to_string(profile) + " has no document of " + BehaviorCalled(id) +
                          ": it isn't active and has no zones. 'varlo-analytics behavior default " +
                          BehaviorCalled(id) + "' gives one to start from");
    session.Out().Document(About(profile, id), FindModel(id), document);
}

void Set(Session& session, const BehaviorArguments& arguments)
{
    const std::string id = BehaviorId(arguments.behavior);
    StoreBehavior(session, ReadSource(arguments.file), arguments.profile, id);
}

void Delete(Session& session, const BehaviorArguments& arguments)
{
    const std::string id = BehaviorId(arguments.behavior);
    const int profile = ProfileId(session.Service(), arguments.profile);
    session.Service().DeleteProfileBehavior(profile, id);
    session.Out().Result(About(profile, id), "Profile " + std::to_string(profile) + " has no " +
                                                 BehaviorCalled(id) + " any more.");
}

void Default(Session& session, const BehaviorArguments& arguments)
{
    const std::string id = BehaviorId(arguments.behavior);
    const std::string document = session.Service().DefaultBehavior(id);
    if (Trimmed(document).empty() && !session.json)
        throw Failure(Exit::Refused, "The service delivers no default document of " + BehaviorCalled(id) +
                                         ". Look for behavior.xml in the folder of its plug-in");
    session.Out().Document({{"behavior", BehaviorCalled(id)}, {"id", id}}, FindModel(id), document);
}

void ShowExample(Session& session, const BehaviorArguments& arguments)
{
    const std::string id = BehaviorId(arguments.behavior);
    const DocumentModel* const model = FindModel(id);
    if (model == nullptr)
        throw Failure(Exit::Usage, "There is no example for " + id +
                                       ". Ask the service: varlo-analytics behavior default");
    session.Out().Document({{"behavior", model->name}, {"id", id}}, model, Example(*model, session.Frame()));
}

void ShowMeaning(Session& session, const BehaviorArguments& arguments)
{
    const DocumentModel* const model = FindModel(BehaviorId(arguments.behavior));
    if (model == nullptr)
        throw Failure(Exit::Usage, "This program knows nothing of " + arguments.behavior +
                                       ". 'varlo-analytics behavior --help' shows the names that it knows");
    Explain(session, *model, arguments.field);
}

void EditDocument(Session& session, const BehaviorArguments& arguments)
{
    const std::string id = BehaviorId(arguments.behavior);
    const int profile = ExistingProfile(session.Service(), arguments.profile).id;
    const std::string stored = BehaviorOf(session.Service(), profile, id);
    const DocumentModel* const model = FindModel(id);
    const bool none = Trimmed(stored).empty();
    const std::string text = !none              ? stored
                             : model != nullptr ? Example(*model, session.Frame())
                                                : session.Service().DefaultBehavior(id);
    const auto store = [&](const Source& source) { StoreBehavior(session, source, arguments.profile, id); };
    if (!Edit(BehaviorName(id), Readable(text) + '\n', store))
        session.Out().Result(About(profile, id), "Nothing has been changed.");
}

using BehaviorAction = void (*)(Session&, const BehaviorArguments&);

// A command on one behavior: of a profile, if there is `ofProfile`.
CLI::App* Add(CLI::App& group, Session& session, const std::string& name, const std::string& description,
              const std::string& examples, BehaviorAction action, bool ofProfile,
              std::shared_ptr<BehaviorArguments> arguments)
{
    CLI::App* const command = AddCommand(group, session, name, description, examples,
                                         [&session, action, arguments] { action(session, *arguments); });
    if (ofProfile)
        command->add_option("PROFILE", arguments->profile, "Number or name of the profile")->required();
    command->add_option("BEHAVIOR", arguments->behavior, "Name or identifier of the behavior")->required();
    return command;
}

} // namespace

void AddBehaviorCommands(CLI::App& app, Session& session)
{
    CLI::App* const group =
        app.add_subcommand("behavior", "Read, write and delete the behaviors of a profile");
    group->require_subcommand(1);
    std::string names;
    for (const std::string& name : BehaviorNames())
        names += "\n  " + name;
    group->footer("A BEHAVIOR is an identifier, or one of these names:" + names);

    const auto arguments = [] { return std::make_shared<BehaviorArguments>(); };
    Add(*group, session, "get", "Write the document of a behavior to standard output",
        "  varlo-analytics behavior get \"Car park\" loitering >loitering.xml", Get, true, arguments());
    const auto set = arguments();
    CLI::App* const command =
        Add(*group, session, "set",
            "Check and store the document of a behavior, and tell what came back different",
            "  varlo-analytics behavior set \"Car park\" loitering loitering.xml\n"
            "  varlo-analytics behavior example loitering | varlo-analytics behavior set 1 loitering",
            Set, true, set);
    command->add_option("FILE", set->file, "The document; standard input without it, or with -");
    AddChecks(*command, session);
    AddChecks(*Add(*group, session, "edit",
                   "Change the document of a behavior in an editor, check it and store it",
                   "  varlo-analytics behavior edit \"Car park\" loitering\n"
                   "  EDITOR=nano varlo-analytics behavior edit 1 loitering",
                   EditDocument, true, arguments()),
              session);
    const auto explained = arguments();
    Add(*group, session, "explain",
        "Tell what the fields of a behavior mean, their units, advised values and defaults",
        "  varlo-analytics behavior explain loitering\n  varlo-analytics behavior explain loitering "
        "dwellTime",
        ShowMeaning, false, explained)
        ->add_option("FIELD", explained->field, "One of them");
    Add(*group, session, "delete", "Delete a behavior from a profile",
        "  varlo-analytics behavior delete \"Car park\" loitering", Delete, true, arguments());
    Add(*group, session, "default", "Write the service's default document of a behavior to standard output",
        "  varlo-analytics behavior default loitering", Default, false, arguments());
    Add(*group, session, "example",
        "Write a full document with a zone to standard output, without asking the service",
        "  varlo-analytics behavior example loitering >loitering.xml", ShowExample, false, arguments());
}

} // namespace client
