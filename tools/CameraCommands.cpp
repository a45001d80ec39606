#include "Cameras.h"
#include "Session.h"

#include <CLI/CLI.hpp>

#include <filesystem>

namespace client
{
namespace
{

// Relative to the working directory, since the file of cameras is in another folder.
std::string Absolute(const std::string& file)
{
    return file.empty() ? "" : std::filesystem::absolute(file).lexically_normal().string();
}

void ShowCameras(Session& session)
{
    List list{{{"name", "NAME"},
               {"url", "ADDRESS"},
               {"user", "USER"},
               {"frame", "FRAME"},
               {"password-file", ""},
               {"cacert", ""},
               {"cert", ""},
               {"key", ""}},
              {}};
    for (const Camera& camera : ReadCameras())
        list.rows.push_back({camera.name, camera.url, camera.user, camera.frame ? camera.frame->Text() : "",
                             camera.passwordFile, camera.authorities, camera.certificate, camera.key});
    session.Out().Table(list, "There are no cameras in " + CamerasFile() +
                                  ". 'varlo-analytics camera add NAME --url URL' adds one.");
}

void Add(Session& session, const std::string& name)
{
    const Access& access = session.access;
    Camera camera;
    camera.name = name;
    camera.frame = session.frameText.empty() ? std::nullopt : std::optional(session.Frame());
    session.TakeCamera();
    camera.url = WholeUrl(access.url);
    camera.user = access.user;
    camera.passwordFile = Absolute(session.passwordFile);
    camera.authorities = Absolute(access.authorities);
    camera.certificate = Absolute(access.certificate);
    camera.key = Absolute(access.key);
    AddCamera(camera);
    session.Out().Result({{"name", name}, {"url", camera.url}},
                         "The camera '" + name + "' is " + camera.url + " from now on.");
}

void Remove(Session& session, const std::string& name)
{
    RemoveCamera(name);
    session.Out().Result({{"name", name}}, "The camera '" + name + "' has been taken out.");
}

void AddNamed(CLI::App& group, Session& session, const std::string& word, const std::string& description,
              const std::string& examples, void (*action)(Session&, const std::string&))
{
    const auto name = std::make_shared<std::string>();
    CLI::App* const command = AddCommand(group, session, word, description, examples,
                                         [&session, action, name] { action(session, *name); });
    command->add_option("NAME", *name, "What the camera is called")->required();
}

} // namespace

void AddCameraCommands(CLI::App& app, Session& session)
{
    CLI::App* const group = app.add_subcommand("camera", "Keep cameras by name, for --camera");
    group->require_subcommand(1);
    AddCommand(*group, session, "list", "List the cameras that are known by name",
               "  varlo-analytics camera list", [&session] { ShowCameras(session); });
    AddNamed(*group, session, "add", "Keep the address, access and frame of the command line under a name",
             "  varlo-analytics camera add gate --url https://192.168.0.90/ --user admin \\\n"
             "      --password-file gate.secret --cacert ca.pem --frame 640x360\n"
             "  varlo-analytics --camera gate profile list",
             Add);
    AddNamed(*group, session, "remove", "Take a camera out", "  varlo-analytics camera remove gate", Remove);
}

} // namespace client
