#pragma once

#include <fake-platform/FakePlatform.h>

#include <analytics/Document.h>

#include <ProfileDocConverter.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

// The families as rows, one for each behavior in the plug-in folder, and a platform that has the plug-in of
// each, with the configurations that an installation starts with.
namespace conversiontest
{

struct Family
{
    std::string name; // the last word of its identifier, and its folder below tests/data
    std::string id;
    std::string alias;
    std::string engine; // that its plug-in depends on
    bool zones;         // has rules, one for each zone
    bool emptyWhenIdle; // writes nothing for a behavior without rules that isn't active
};
inline void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

const std::vector<Family>& Families();
std::vector<Family> ZoneFamilies(); // those with zones

// A file as text; empty if there is none.
std::string ReadFile(const std::string& path);

// Stands behind the plug-in manager as long as it lives.
struct Plugins : fake::Platform
{
    Plugins();
    fake::Plugin& Of(const std::string& id);
};

std::unique_ptr<profile_conversion::ProfileDocConverter> Converter(const std::string& id);

// The text of the first match in a document, and how many matches there are.
std::string TextAt(const std::string& xml, const std::string& query);
std::size_t CountAt(const std::string& xml, const std::string& query);

// A document without the white space between its tags, for comparison.
std::string Canonical(const std::string& xml);

} // namespace conversiontest
