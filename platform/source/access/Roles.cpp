#include "access/Roles.h"

#include <analytics/Settings.h>

#include <algorithm>
#include <array>
#include <vector>

namespace tarno::osa
{
using analytics::Settings;
using analytics::platform::Role;
namespace
{

struct Row
{
    Role role;
    const char* key;
};
// The highest first.
constexpr std::array kRows = {Row{Role::Administrator, "//server/roles/administrator"},
                              Row{Role::Operator, "//server/roles/operator"},
                              Row{Role::Viewer, "//server/roles/viewer"}};

// A query has no text of its own for an element that only holds others, but it matches.
bool Stand() { return !Settings::GetValues("//server/roles").empty(); }

} // namespace

Role RoleOf(const std::string& name)
{
    if (!Stand())
        return Role::Administrator;
    for (const Row& row : kRows)
    {
        const std::vector<std::string> names = Settings::GetValues(row.key);
        if (!name.empty() && std::find(names.begin(), names.end(), name) != names.end())
            return row.role;
    }
    return Role::Viewer;
}

std::string RolesInSettings()
{
    std::string all = Stand() ? "roles" : "";
    for (const Row& row : kRows)
        for (const std::string& name : Settings::GetValues(row.key))
            all += std::string(1, '\0') + row.key + '\0' + name;
    return all;
}

} // namespace tarno::osa
