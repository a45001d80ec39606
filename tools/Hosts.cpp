#include "Hosts.h"

#include "Access.h"
#include "Documents.h"
#include "Failure.h"
#include "Text.h"

#include <map>
#include <sstream>

namespace client
{

std::vector<std::string> ReadHosts(const std::string& file)
{
    std::vector<std::string> hosts;
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
            hosts.push_back(WholeUrl(text));
        }
        catch (const Failure& failure)
        {
            throw Failure(Exit::Usage, place + failure.what());
        }
        if (const auto [known, added] = lines.emplace(hosts.back(), number); !added)
            throw Failure(Exit::Usage, place + hosts.back() + " stands in line " +
                                           std::to_string(known->second) + " already. Take one of them out");
    }
    if (hosts.empty())
        throw Failure(Exit::Usage, Printable(file) + " names no host. Write an address into each line");
    return hosts;
}

} // namespace client
