#include "Hosts.h"

#include "Access.h"
#include "Documents.h"
#include "Failure.h"
#include "Text.h"

#include <map>
#include <sstream>

namespace client
{

Target ParseTarget(const std::string& line, const Access& access)
{
    Target target{access};
    target.access.url = WholeUrl(line);
    return target;
}

std::string LineOf(const Target& target) { return target.access.url; }

std::vector<Target> ReadHosts(const std::string& file, const Access& access)
{
    std::vector<Target> hosts;
    std::map<std::string, int> lines;
    std::istringstream stream(ReadSource(file).text);
    std::string line;
    for (int number = 1; std::getline(stream, line); ++number)
    {
        const std::string text = Trimmed(line.substr(0, line.find('#')));
        if (text.empty())
            continue;
        const std::string place = Printable(file) + ":" + std::to_string(number) + ": ";
        try
        {
            hosts.push_back(ParseTarget(text, access));
        }
        catch (const Failure& failure)
        {
            throw Failure(Exit::Usage, place + failure.what());
        }
        const std::string& url = hosts.back().access.url;
        if (const auto [known, added] = lines.emplace(url, number); !added)
            throw Failure(Exit::Usage, place + url + " stands in line " + std::to_string(known->second) +
                                           " already. Take one of them out");
    }
    if (hosts.empty())
        throw Failure(Exit::Usage, Printable(file) + " names no host. Write an address into each line");
    return hosts;
}

} // namespace client
