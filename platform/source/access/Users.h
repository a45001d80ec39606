#pragma once

#include <map>
#include <stdexcept>
#include <string>

namespace tarno::osa
{

// Something that the operator wrote down can't be used. Says which file, which line, and what to do.
class AccessFault : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

// Who may use the service: names and password hashes.
class Users
{
  public:
    // The text of a file of lines "name:hash"; empty lines and lines that begin with '#' are skipped.
    // Throws AccessFault, with `path` and the line.
    Users(const std::string& path, const std::string& text);

    bool Has(const std::string& name) const { return m_hashes.count(name) != 0; }
    // What to hold a password against. For a name that isn't there it is the hash of somebody else, so
    // that such a name costs what a wrong password costs.
    const std::string& HashFor(const std::string& name) const;

  private:
    void Add(const std::string& where, const std::string& line);

    std::map<std::string, std::string> m_hashes;
};

} // namespace tarno::osa
