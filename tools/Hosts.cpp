#include "Hosts.h"

#include "Documents.h"
#include "Failure.h"
#include "Text.h"

#include <filesystem>
#include <map>
#include <sstream>

namespace client
{

std::vector<Camera> ReadHosts(const std::string& file)
{
    const std::string folder = std::filesystem::path(file).parent_path().string();
    std::vector<Camera> cameras;
    std::map<std::string, int> lines;
    std::istringstream stream(ReadSource(file).text);
    std::string line;
    for (int number = 1; std::getline(stream, line); ++number)
    {
        const std::string text = Trimmed(line.substr(0, line.find('#')));
        if (text.empty())
            continue;
        const std::string place = Printable(file) + ":" + std::to_string(number) + ": ";
        cameras.push_back(ParseHost(text, folder, place));
        const std::string& url = cameras.back().url;
        if (const auto [known, added] = lines.emplace(url, number); !added)
            throw Failure(Exit::Usage, place + url + " stands in line " + std::to_string(known->second) +
                                           " already. Take one of them out");
    }
    if (cameras.empty())
        throw Failure(Exit::Usage, Printable(file) + " names no host. Write an address into each line");
    return cameras;
}

std::vector<Target> TargetsOf(const std::vector<Camera>& cameras, const Target& otherwise)
{
    std::map<std::string, std::string> passwords = {{otherwise.access.user, otherwise.access.password}};
    std::vector<Target> targets;
    for (const Camera& camera : cameras)
    {
        Target target{AccessOf(camera, otherwise.access), camera.frame.value_or(otherwise.frame), camera};
        Access& access = target.access;
        GuardPassword(access);
        if (!camera.passwordFile.empty())
            access.password = ReadPassword(access.user, camera.passwordFile);
        else if (const auto known = passwords.find(access.user); known != passwords.end())
            access.password = known->second;
        else
            access.password = passwords[access.user] = ReadPassword(access.user, "");
        targets.push_back(target);
    }
    return targets;
}

} // namespace client
