#include "Session.h"
#include "Transfer.h"

#include <CLI/CLI.hpp>

namespace client
{
namespace
{

struct FolderArguments
{
    std::string profile;
    std::string folder;
    std::string name;
    bool force = false;
    StoreOptions store;
};

std::string Counted(const ProfileDocuments& profile)
{
    const std::size_t count = profile.behaviors.size();
    return std::string(profile.scene ? "a scene and " : "no scene and ") + std::to_string(count) +
           (count == 1 ? " behavior document" : " behavior documents");
}

void Export(Session& session, const FolderArguments& arguments)
{
    const Profile profile = ExistingProfile(session.Service(), arguments.profile);
    ProfileDocuments documents = Fetch(session.Service(), profile);
    documents.frame = session.Frame();
    WriteFolder(arguments.folder, documents, arguments.force);
    session.Out().Result({{"profile", static_cast<long long>(profile.id)},
                          {"name", profile.name},
                          {"folder", arguments.folder},
                          {"scene", documents.scene.has_value()},
                          {"behaviors", static_cast<long long>(documents.behaviors.size())}},
                         "Profile " + std::to_string(profile.id) + " '" + profile.name + "' is in " +
                             arguments.folder + ": " + Counted(documents) + ".");
}

void Import(Session& session, const FolderArguments& arguments)
{
    ProfileDocuments documents = ReadFolder(arguments.folder);
    if (!arguments.name.empty())
        documents.name = arguments.name;
    CheckAll(documents, session.Checks());
    const ProfileDocuments scaled = InFrame(documents, session.Frame());
    const Stored stored = Store(session.Service(), scaled, arguments.store, session.Checks());
    if (!documents.preset.empty())
        Tell({arguments.folder, ""},
             {{Finding::Level::Warning, 0, "/preset",
               "the camera preset isn't taken over: the service has no operation for it"}},
             session.json);
    std::string sentence = "Profile " + std::to_string(stored.id) + " '" + documents.name +
                           "' has been made of " + Counted(documents) + (stored.runs ? " and runs." : ".");
    if (!stored.changes.empty())
        sentence += " This came back different:";
    session.Out().Report({{"id", static_cast<long long>(stored.id)},
                          {"name", documents.name},
                          {"runs", stored.runs},
                          {"replaced", static_cast<long long>(stored.replaced)}},
                         sentence, "differences", Listed(stored.changes));
}

} // namespace

void AddFolderCommands(CLI::App& app, Session& session)
{
    const auto exported = std::make_shared<FolderArguments>();
    CLI::App* const exporting =
        AddCommand(app, session, "export", "Write a whole profile as files into a folder",
                   "  varlo-analytics export \"Car park\" backup/car-park",
                   [&session, exported] { Export(session, *exported); });
    exporting->add_option("PROFILE", exported->profile, "Number or name of the profile")->required();
    exporting->add_option("DIR", exported->folder, "The folder; made if it is missing")->required();
    exporting->add_flag("--force", exported->force, "Replace a profile that is in the folder");

    const auto imported = std::make_shared<FolderArguments>();
    CLI::App* const importing =
        AddCommand(app, session, "import", "Make a new profile of the files in a folder",
                   "  varlo-analytics import backup/car-park\n"
                   "  varlo-analytics --url http://192.168.0.91:8080/ import backup/car-park --replace --run",
                   [&session, imported] { Import(session, *imported); });
    importing->add_option("DIR", imported->folder, "A folder that 'export' has written")->required();
    importing->add_option("--name", imported->name, "Give the profile another name")->type_name("NAME");
    importing->add_flag("--run", imported->store.run, "Run the profile");
    importing->add_flag("--replace", imported->store.replace,
                        "Delete the profiles of the same name once it is there");
    AddChecks(*importing, session);
}

} // namespace client
