#include "access/Users.h"

#include "access/Passwords.h"

#include <analytics/Settings.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>

namespace tarno::osa
{
using analytics::Settings;
using analytics::platform::Role;
namespace
{

struct RoleKey
{
    Role role;
    const char* key;
};
// The highest first.
constexpr std::array kRoles = {RoleKey{Role::Administrator, "//server/roles/administrator"},
                               RoleKey{Role::Operator, "//server/roles/operator"},
                               RoleKey{Role::Viewer, "//server/roles/viewer"}};

// What some editors begin a file of UTF-8 with.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// A query has no text of its own for an element that only holds others, but it matches.
bool HasRoles() { return !Settings::GetValues("//server/roles").empty(); }

} // namespace

Users::Users(const std::string& path, const std::string& text) : m_path(path)
{
    std::istringstream lines(text.starts_with(kByteOrderMark) ? text.substr(kByteOrderMark.size()) : text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number)
    {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty() || line.front() == '#')
            continue;
        const std::string mistake = Add(line);
        if (!mistake.empty())
            m_mistakes.push_back(path + ':' + std::to_string(number) + ": " + mistake);
    }
}

std::string Users::Add(const std::string& line)
{
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos || colon == 0)
        return "the line isn't \"name:hash\"; write it with \"htpasswd -B\"";
    const std::string name = line.substr(0, colon);
    const std::string hash = line.substr(colon + 1);
    if (name.starts_with("CN="))
        return "the user \"" + name + "\" can't log in: such a name stands for a certificate; choose another";
    const std::string why = WhyNoPasswordHash(hash);
    if (!why.empty())
        return "the user \"" + name + "\" can't log in: " + why;
    if (!m_hashes.emplace(name, hash).second)
        return "the user \"" + name + "\" is there twice, and the first line counts; remove one of them";
    return "";
}

std::string Users::WhyNobody() const
{
    if (!m_hashes.empty())
        return "";
    return m_mistakes.empty() ? m_path + ": there is no user in it; add one with \"htpasswd -B\""
                              : m_mistakes.front();
}

const std::string& Users::HashFor(const std::string& name) const
{
    // The hash of no known password.
    static const std::string kNobody = "$2b$05$CCCCCCCCCCCCCCCCCCCCC.E5YPO9kmyuRGyh0XouQYb4YMJKvyOeW";
    if (m_hashes.empty())
        return kNobody;
    const auto found = m_hashes.find(name);
    return (found == m_hashes.end() ? m_hashes.begin() : found)->second;
}

Role RoleOf(const std::string& name)
{
    if (!HasRoles())
        return Role::Administrator;
    for (const RoleKey& row : kRoles)
    {
        const std::vector<std::string> names = Settings::GetValues(row.key);
        if (!name.empty() && std::ranges::count(names, name) > 0)
            return row.role;
    }
    return Role::Viewer;
}

std::string RolesInSettings()
{
    std::string all = HasRoles() ? "roles" : "";
    for (const RoleKey& row : kRoles)
        for (const std::string& name : Settings::GetValues(row.key))
            all += std::string(1, '\0') + row.key + '\0' + name;
    return all;
}

} // namespace tarno::osa
