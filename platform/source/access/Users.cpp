#include "access/Users.h"

#include "access/PasswordHash.h"

#include <sstream>

namespace tarno::osa
{

Users::Users(const std::string& path, const std::string& text)
{
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number)
    {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (!line.empty() && line.front() != '#')
            Add(path + ':' + std::to_string(number) + ": ", line);
    }
    if (m_hashes.empty())
        throw AccessFault(path + ": there is no user in it; add one with \"htpasswd -B\"");
}

void Users::Add(const std::string& where, const std::string& line)
{
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos || colon == 0)
        throw AccessFault(where + "the line is no \"name:hash\"; write it with \"htpasswd -B\"");
    const std::string name = line.substr(0, colon);
    const std::string hash = line.substr(colon + 1);
    const std::string why = WhyNoPasswordHash(hash);
    if (!why.empty())
        throw AccessFault(where + "the user \"" + name + "\" can't log in: " + why);
    if (!m_hashes.emplace(name, hash).second)
        throw AccessFault(where + "the user \"" + name + "\" is there twice; remove one of the lines");
}

const std::string& Users::HashFor(const std::string& name) const
{
    const auto found = m_hashes.find(name);
    return (found == m_hashes.end() ? m_hashes.begin() : found)->second;
}

} // namespace tarno::osa
