#pragma once

#include "request/Request.h"

#include <map>
#include <string>
#include <vector>

namespace tarno::osa
{

// Who may use the service: names and password hashes.
class Users
{
  public:
    // The text of a file of lines "name:hash"; empty lines and lines that begin with '#' are skipped. A line
    // that can't be used is left out.
    Users(const std::string& path, const std::string& text);

    // A sentence for each line that was left out, with `path` and the line.
    const std::vector<std::string>& Mistakes() const { return m_mistakes; }
    // Why nobody can get in; empty if somebody can.
    std::string WhyNobody() const;

    bool Has(const std::string& name) const { return m_hashes.count(name) != 0; }
    // What to hold a password against. For a name that isn't there it is the hash of somebody else, so
    // that such a name costs what a wrong password costs.
    const std::string& HashFor(const std::string& name) const;

  private:
    // Empty if the line is in order.
    std::string Add(const std::string& line);

    const std::string m_path;
    std::map<std::string, std::string> m_hashes;
    std::vector<std::string> m_mistakes;
};

// What the settings say that `name` may do: a user, "CN=..." of a certificate, or empty for nobody. Without
// roles whoever gets in is an administrator, with them who isn't named is a viewer. Of two roles the higher
// one counts. Throws AnalyticsFault if the settings could never be read.
analytics::platform::Role RoleOf(const std::string& name);

// All that RoleOf() depends on: while it is the same, so is every role.
std::string RolesInSettings();

} // namespace tarno::osa
