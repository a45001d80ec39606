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
    // Why no user can log in; empty if one can.
    std::string WhyNobody() const;

    bool Has(const std::string& name) const { return m_hashes.count(name) != 0; }
    // The hash to compare a password with. For an unknown name it is another user's, so that the answer takes
    // as long as for a wrong password.
    const std::string& HashFor(const std::string& name) const;

  private:
    // Empty if the line is in order.
    std::string Add(const std::string& line);

    const std::string m_path;
    std::map<std::string, std::string> m_hashes;
    std::vector<std::string> m_mistakes;
};

// The role that the settings give to `name`: a user, "CN=..." of a certificate, or empty without either. If
// they define no roles it is administrator; if they do, viewer for a name without one. Of two roles the
// higher one counts. Throws AnalyticsFault if the settings could never be read.
analytics::platform::Role RoleOf(const std::string& name);

// All that RoleOf() depends on; while this text is equal, so is every role.
std::string RolesInSettings();

} // namespace tarno::osa
