#include "Cameras.h"

#include "Documents.h"
#include "Failure.h"
#include "Text.h"

#include <boost/property_tree/ini_parser.hpp>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace client
{
namespace
{

std::string FromFolder(const std::string& folder, const std::string& file)
{
    return file.empty() || folder.empty() ? file : (std::filesystem::path(folder) / file).string();
}

std::string FolderOf(const std::string& file) { return std::filesystem::path(file).parent_path().string(); }

const std::string& NotEmpty(const std::string& value, const std::string& key, const std::string& place)
{
    if (value.empty())
        throw Failure(Exit::Usage, place + key + " has no value. Write " + key + "=VALUE");
    return value;
}

void Take(Camera& camera, const std::string& key, const std::string& value, const std::string& folder,
          const std::string& place)
{
    NotEmpty(value, key, place);
    if (key == "url")
        camera.url = value;
    else if (key == "user")
        camera.user = value;
    else if (key == "password-file")
        camera.passwordFile = FromFolder(folder, value);
    else if (key == "cacert")
        camera.authorities = FromFolder(folder, value);
    else if (key == "cert")
        camera.certificate = FromFolder(folder, value);
    else if (key == "key")
        camera.key = FromFolder(folder, value);
    else if (key == "frame")
        camera.frame = ParseFrame(value, place + key);
    else
        throw Failure(Exit::Usage, place + "'" + key +
                                       "' isn't known here. There are url, user, password-file, "
                                       "cacert, cert, key and frame");
}

// The keys that a camera sets, with their values.
std::vector<std::pair<std::string, std::string>> Said(const Camera& camera)
{
    std::vector<std::pair<std::string, std::string>> said = {
        {"url", camera.url},
        {"user", camera.user},
        {"password-file", camera.passwordFile},
        {"cacert", camera.authorities},
        {"cert", camera.certificate},
        {"key", camera.key},
        {"frame", camera.frame ? camera.frame->Text() : ""}};
    std::erase_if(said, [](const auto& one) { return one.second.empty(); });
    return said;
}

std::string TextOfFile(const std::string& file)
{
    std::error_code error;
    const bool missing = std::filesystem::status(file, error).type() == std::filesystem::file_type::not_found;
    return missing ? "" : ReadSource(file).text;
}

Camera Section(const std::string& name, const boost::property_tree::ptree& values, const std::string& file)
{
    Camera camera;
    camera.name = name;
    const std::string place = Printable(file) + ": [" + name + "]: ";
    for (const auto& [key, value] : values)
        Take(camera, key, value.data(), FolderOf(file), place);
    NotEmpty(camera.url, "url", place);
    return camera;
}

// Others that lock the same folder wait while it lives. The folder is locked, since its files are replaced.
// Nobody waits where there is no folder, or a file system without locks.
class FolderLock
{
  public:
    explicit FolderLock(const std::string& folder)
        : m_folder(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        flock(m_folder, LOCK_EX);
    }
    ~FolderLock() { close(m_folder); }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

  private:
    int m_folder;
};

const Camera* Find(const std::vector<Camera>& cameras, const std::string& name)
{
    const auto found =
        std::find_if(cameras.begin(), cameras.end(), [&name](const Camera& one) { return one.name == name; });
    return found == cameras.end() ? nullptr : &*found;
}

// Empty if nobody has said where the user's files are.
std::string ConfigurationFolder()
{
    const char* const folder = std::getenv("XDG_CONFIG_HOME");
    if (folder != nullptr && *folder != '\0')
        return folder;
    const char* const home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? std::string(home) + "/.config" : "";
}

[[noreturn]] void RefuseName(const std::string& name)
{
    throw Failure(Exit::Usage, "There is no camera '" + name + "' in " + CamerasFile() +
                                   ". 'varlo-analytics camera list' shows those that there are");
}

} // namespace

std::string CamerasFile() { return ConfigurationFolder() + "/varlo-analytics/cameras.ini"; }

std::vector<Camera> ReadCameras()
{
    namespace tree = boost::property_tree;
    const std::string file = CamerasFile();
    tree::ptree sections;
    try
    {
        std::istringstream text(TextOfFile(file));
        tree::read_ini(text, sections);
    }
    catch (const tree::ini_parser_error& error)
    {
        throw Failure(Exit::Usage,
                      Printable(file) + ":" + std::to_string(error.line()) + ": " + error.message() +
                          ". A section is [NAME], below it stand lines like url = https://camera/");
    }
    std::vector<Camera> cameras;
    for (const auto& [name, values] : sections)
        cameras.push_back(Section(name, values, file));
    return cameras;
}

Camera NamedCamera(const std::string& name)
{
    const std::vector<Camera> cameras = ReadCameras();
    const Camera* const camera = Find(cameras, name);
    if (camera == nullptr)
        RefuseName(name);
    return *camera;
}

void AddCamera(const Camera& camera)
{
    const bool plain = !camera.name.empty() && camera.name.find_first_of("[]=;# \t\r\n") == std::string::npos;
    if (!plain)
        throw Failure(Exit::Usage,
                      "'" + camera.name +
                          "' can't be the name of a camera: leave out white space and any of []=;#");
    if (ConfigurationFolder().empty())
        throw Failure(Exit::Usage, "There is no place for the file of cameras. Set HOME to your home folder");
    for (const auto& [key, value] : Said(camera))
        if (value != Trimmed(value) || value.find_first_of("\n\v\f") != std::string::npos)
            throw Failure(Exit::Usage,
                          "The " + key + " '" + value +
                              "' can't be kept: leave out line breaks, and white space around it");
    const std::string file = CamerasFile();
    std::error_code error;
    std::filesystem::create_directories(FolderOf(file), error);
    const FolderLock lock(FolderOf(file));
    const std::vector<Camera> known = ReadCameras();
    if (Find(known, camera.name) != nullptr)
        throw Failure(Exit::Usage, "There is a camera '" + camera.name +
                                       "' already. Take it out first, with 'varlo-analytics camera remove'");
    std::string text = TextOfFile(file);
    text += (text.empty() ? "[" : "\n[") + camera.name + "]\n";
    for (const auto& [key, value] : Said(camera))
        text += key + " = " + value + "\n";
    WriteFile(file, text);
}

void RemoveCamera(const std::string& name)
{
    const std::string file = CamerasFile();
    const FolderLock lock(FolderOf(file));
    NamedCamera(name);
    std::istringstream lines(TextOfFile(file));
    std::string kept;
    bool inside = false;
    for (std::string line; std::getline(lines, line);)
    {
        const std::string text = Trimmed(line);
        if (text.starts_with('['))
            inside = Trimmed(text.substr(1, text.find(']') - 1)) == name;
        if (!inside)
            kept += line + '\n';
    }
    WriteFile(file, kept);
}

Camera ParseHost(const std::string& line, const std::string& folder, const std::string& place)
{
    std::istringstream words(line);
    std::string word;
    words >> word;
    const std::vector<Camera> cameras =
        word.find("://") == std::string::npos ? ReadCameras() : std::vector<Camera>();
    const Camera* const named = Find(cameras, word);
    Camera camera = named == nullptr ? Camera() : *named;
    try
    {
        if (named == nullptr)
            camera.url = WholeUrl(word);
    }
    catch (const Failure& failure)
    {
        throw Failure(Exit::Usage, place + failure.what());
    }
    while (words >> word)
    {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos)
            throw Failure(Exit::Usage, place + "'" + word + "' isn't key=value, as in frame=640x360");
        Take(camera, word.substr(0, equals), word.substr(equals + 1), folder, place);
    }
    camera.url = WholeUrl(camera.url);
    return camera;
}

Access AccessOf(const Camera& camera, const Access& other)
{
    Access access = other;
    const auto take = [](std::string& mine, const std::string& said)
    {
        if (!said.empty())
            mine = said;
    };
    take(access.url, camera.url);
    take(access.user, camera.user);
    take(access.authorities, camera.authorities);
    take(access.certificate, camera.certificate);
    take(access.key, camera.key);
    return access;
}

} // namespace client
