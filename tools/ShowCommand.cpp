#include "Documents.h"
#include "Scene.h"
#include "Session.h"
#include "documents/Drawing.h"
#include "documents/Models.h"

#include <CLI/CLI.hpp>

#include <cstdio>

namespace client
{
namespace
{

struct ShowArguments
{
    std::string profile;
    std::string file;
};

void Show(Session& session, const ShowArguments& arguments)
{
    Service& service = session.Service();
    const Profile profile = ExistingProfile(service, arguments.profile);
    std::vector<std::pair<const DocumentModel*, std::string>> documents;
    for (const Behavior& behavior : service.Availability(profile.id))
        if (const DocumentModel* const model = FindModel(behavior.id))
            documents.emplace_back(model, BehaviorOf(service, profile.id, behavior.id));
    documents.emplace_back(&SceneModel(), SceneOf(service, profile.id).value_or(""));
    const std::string drawing = Drawing(profile.name, session.Frame(), documents);
    if (arguments.file.empty())
    {
        std::fputs((drawing + '\n').c_str(), stdout);
        return;
    }
    WriteFile(arguments.file, drawing + '\n');
    session.Out().Result({{"profile", static_cast<long long>(profile.id)}, {"file", arguments.file}},
                         "Profile " + std::to_string(profile.id) + " is drawn in " + arguments.file + ".");
}

} // namespace

void AddShowCommand(CLI::App& app, Session& session)
{
    const auto arguments = std::make_shared<ShowArguments>();
    CLI::App* const command =
        AddCommand(app, session, "show", "Draw all zones of a profile over the frame, as SVG",
                   "  varlo-analytics show \"Car park\" --out car-park.svg\n"
                   "  varlo-analytics --frame 640x480 show 1 >profile.svg",
                   [&session, arguments] { Show(session, *arguments); });
    command->add_option("PROFILE", arguments->profile, "Number or name of the profile")->required();
    command->add_option("--out", arguments->file, "The file; standard output without it")
        ->type_name("FILE.svg");
}

} // namespace client
