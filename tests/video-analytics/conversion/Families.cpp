#include "Families.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cassert>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace conversiontest
{

namespace
{
constexpr char kRule[] = "com.varlo.rule.";
constexpr char kFolder[] = PLATFORM_DATA "/plugins/";

// The document's element; an empty one if there is none.
pugi::xml_node Load(pugi::xml_document& document, const std::filesystem::path& file)
{
    document.load_file(file.c_str());
    return document.document_element();
}

// Whether a golden document says that the family writes an idle behavior.
bool HasIdleDocument(const std::string& name)
{
    for (const auto& golden : std::filesystem::recursive_directory_iterator(TEST_DATA "/" + name))
    {
        if (golden.is_directory())
            continue;
        pugi::xml_document document;
        const pugi::xml_node behavior = Load(document, golden.path());
        if (behavior.attribute("version") && !behavior.attribute("active").as_bool() &&
            !behavior.child("rois").child("roi"))
            return true;
    }
    return false;
}

Family FamilyOf(const std::string& id)
{
    pugi::xml_document document;
    Family family;
    family.name = id.substr(std::size(kRule) - 1);
    family.id = id;
    const pugi::xml_node manifest = Load(document, kFolder + id + "/manifest.xml");
    family.alias = manifest.child_value("alias");
    family.engine = manifest.child("dependencies").child_value("id");
    family.zones = !Load(document, kFolder + id + "/behavior.xml").child("rois").empty();
    family.emptyWhenIdle = !HasIdleDocument(family.name);
    return family;
}
} // namespace

const std::vector<Family>& Families()
{
    static const std::vector<Family> kFamilies = []
    {
        std::vector<Family> families;
        for (const auto& plugin : std::filesystem::directory_iterator(kFolder))
            if (const std::string id = plugin.path().filename(); id.starts_with(kRule))
                families.push_back(FamilyOf(id));
        std::ranges::sort(families, {}, &Family::id);
        return families;
    }();
    return kFamilies;
}

std::vector<Family> ZoneFamilies()
{
    std::vector<Family> families = Families();
    std::erase_if(families, [](const Family& family) { return !family.zones; });
    return families;
}

std::string ReadFile(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

Plugins::Plugins()
{
    for (const Family& family : Families())
    {
        fake::Plugin plugin;
        plugin.fields.id = family.id;
        plugin.fields.alias = family.alias;
        plugin.fields.dependencies = {family.engine};
        plugin.fields.type = "rule";
        plugins.push_back(plugin);
        fake::Plugin engine;
        engine.fields.id = family.engine;
        engine.fields.alias = "alias of " + engine.fields.id;
        engine.fields.type = "engine";
        plugins.push_back(engine);
    }
    for (fake::Plugin& plugin : plugins)
        plugin.engineDocument = ReadFile(PLATFORM_DATA "/plugins/" + plugin.fields.id + "/engine.xml");
}

fake::Plugin& Plugins::Of(const std::string& id)
{
    for (fake::Plugin& plugin : plugins)
        if (plugin.fields.id == id)
            return plugin;
    assert(false);
    return plugins.front();
}

std::unique_ptr<profile_conversion::ProfileDocConverter> Converter(const std::string& id)
{
    return std::unique_ptr<profile_conversion::ProfileDocConverter>(
        profile_conversion::Factory::CreateConverter(id));
}

std::string TextAt(const std::string& xml, const std::string& query)
{
    pugi::xml_document doc;
    if (!doc.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_ws_pcdata))
        return "not XML: " + xml;
    const pugi::xpath_node first = doc.select_node(query.c_str());
    return first.attribute() ? first.attribute().value()
                             : pugi::xpath_query("string()").evaluate_string(first.node());
}

std::size_t CountAt(const std::string& xml, const std::string& query)
{
    pugi::xml_document doc;
    doc.load_buffer(xml.data(), xml.size());
    return doc.select_nodes(query.c_str()).size();
}

std::string Canonical(const std::string& xml)
{
    analytics::Document doc;
    if (!doc.ParseString(xml))
        return "not XML: " + xml;
    return std::regex_replace(doc.DumpToString(), std::regex(">\\s+<"), "><");
}

} // namespace conversiontest
