#include "plugins/PluginFolder.h"

#include <analytics/Faults.h>

#include "files/File.h"
#include "settings/Mistakes.h"
#include "xml/Text.h"
#include "xml/XmlFile.h"

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <utility>

namespace analytics::platform
{

namespace
{
// A shortage passes; what it hides must not be taken for missing.
FileText ReadOrThrow(const std::string& path)
{
    FileText file = ReadFile(path);
    if (file.Exhausted())
        throw AnalyticsFault(path + " can't be read just now: " + file.failure + "; try again later");
    return file;
}

PluginText ReadText(const std::string& path, PluginProblems& problems)
{
    FileText file = ReadOrThrow(path);
    if (file.Missing())
        return {};
    if (!file.failure.empty())
    {
        const std::string failure = "The default configuration " + path + " can't be read: " + file.failure;
        problems.push_back({failure});
        return {"", failure};
    }
    xml::SyntaxError error;
    if (!xml::Check(file.text, error))
        problems.push_back({path + ':' + std::to_string(error.line) +
                                ": the default configuration can't be used: " + error.reason,
                            std::hash<std::string>()(file.text)});
    return {std::move(file.text), ""};
}

constexpr std::array kKnown = {
    Known{"manifest"},
    Known{"manifest@type"},
    Known{"manifest/id"},
    Known{"manifest/alias"},
    Known{"manifest/name"},
    Known{"manifest/resourceRequirement"}, // numbers are judged as they are read
    Known{"manifest/fixedCameraPosition"},
    Known{"manifest/supportsAdvancedMode"},
    Known{"manifest/dependencies", Takes::Several},
    Known{"manifest/dependencies/id", Takes::Several},
};

void AddUnknownNames(const std::string& path, const std::string& text, PluginProblems& problems)
{
    pugi::xml_document tree;
    xml::SyntaxError ignored;
    xml::Read(text, tree, ignored, xml::Doctype::NamesFile);
    for (std::string& mistake : MistakesIn(path, text, tree.child("manifest"), kKnown))
        problems.push_back({std::move(mistake), std::hash<std::string>()(text)});
}
} // namespace

bool ReadPlugin(const std::string& home, Plugin& plugin, PluginProblems& problems)
{
    const std::string path = home + '/' + kManifestFile;
    const FileText file = ReadOrThrow(path);
    const std::string ignored = ". The plug-in is left out.";
    if (!file.failure.empty())
    {
        problems.push_back({path + ": the manifest can't be read: " + file.failure + ignored});
        return false;
    }
    AddUnknownNames(path, file.text, problems);
    xml::SyntaxError error;
    auto fields = ReadManifest(file.text, error);
    if (!fields)
    {
        problems.push_back({path + ':' + std::to_string(error.line) +
                                ": the manifest can't be used: " + error.reason + ignored,
                            std::hash<std::string>()(file.text)});
        return false;
    }
    fields->home = home;
    plugin.manifest = Manifest(std::move(*fields));
    plugin.engineDefault = ReadText(home + '/' + kEngineFile, problems);
    plugin.clientsDefault = ReadText(home + '/' + kBehaviorFile, problems);
    const std::string factory = home + '/' + kFactoryFile;
    plugin.factory = StampOf(factory).error == 0 ? factory : "";
    return true;
}

namespace
{
struct TextField
{
    const char* query;
    std::string ManifestFields::*field;
};
constexpr TextField kTexts[] = {
    {"/manifest/@type", &ManifestFields::type},
    {"/manifest/id", &ManifestFields::id},
    {"/manifest/alias", &ManifestFields::alias},
    {"/manifest/name", &ManifestFields::name},
};

struct FlagField
{
    const char* name;
    bool ManifestFields::*field;
};
constexpr FlagField kFlags[] = {
    {"fixedCameraPosition", &ManifestFields::fixedCameraPosition},
    {"supportsAdvancedMode", &ManifestFields::supportsAdvancedMode},
};

std::string FirstText(const XmlFile& xml, const char* query)
{
    const auto texts = xml.Texts(query);
    return texts.empty() ? std::string() : texts.front().text;
}

// The number in the element `name`, 0 if there is none. False if it isn't one from 0 to `max`.
bool ReadNumber(const XmlFile& xml, const std::string& name, std::uint32_t max, std::uint32_t& number,
                xml::SyntaxError& error)
{
    number = 0;
    const auto found = xml.Texts("/manifest/" + name);
    if (found.empty())
        return true;
    const std::string& text = found.front().text;
    if (xml::ReadInteger(text, number) == std::errc() && number <= max)
        return true;
    error = {found.front().line, name + " is \"" + text.substr(0, 40) +
                                     "\" and has to be a whole number from 0 to " + std::to_string(max)};
    return false;
}

bool ReadNumbers(const XmlFile& xml, ManifestFields& fields, xml::SyntaxError& error)
{
    for (const FlagField& flag : kFlags)
    {
        std::uint32_t number = 0;
        if (!ReadNumber(xml, flag.name, 1, number, error))
            return false;
        fields.*flag.field = number != 0;
    }
    return ReadNumber(xml, "resourceRequirement", std::numeric_limits<std::uint32_t>::max(),
                      fields.resourceRequirement, error);
}

// What makes the texts unusable; empty if nothing does.
std::string TextFault(const XmlFile& xml, const ManifestFields& fields)
{
    if (const std::string root = FirstText(xml, "name(/*)"); root != "manifest")
        return "the root element is " + root + " and has to be manifest";
    if (std::ranges::find(kPluginTypes, fields.type) == kPluginTypes.end())
        return "the type is \"" + fields.type.substr(0, 40) + "\" and has to be source, engine, rule or sink";
    return fields.id.empty() ? "the id is missing or empty" : "";
}
} // namespace

std::optional<ManifestFields> ReadManifest(const std::string& text, xml::SyntaxError& error)
{
    const auto xml = XmlFile::Parse(text, error);
    if (!xml)
        return std::nullopt;
    ManifestFields fields;
    for (const TextField& row : kTexts)
        fields.*row.field = FirstText(*xml, row.query);
    if (std::string fault = TextFault(*xml, fields); !fault.empty())
    {
        error = {xml->Texts("/*").front().line, std::move(fault)};
        return std::nullopt;
    }
    if (!ReadNumbers(*xml, fields, error))
        return std::nullopt;
    for (XmlText& dependency : xml->Texts("/manifest/dependencies/id[normalize-space()]"))
        fields.dependencies.push_back(std::move(dependency.text));
    return fields;
}

} // namespace analytics::platform
