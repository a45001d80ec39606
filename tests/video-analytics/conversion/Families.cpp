#include "Families.h"

#include <cassert>
#include <fstream>
#include <regex>
#include <sstream>

namespace conversiontest
{

const std::vector<Family>& Families()
{
    static const std::vector<Family> kFamilies = {
        {"adaptivemotion", "com.varlo.rule.adaptivemotion", "urn:varlo-com:AlgorithmId:AdaptiveMotion:1",
         "com.varlo.engine.motiondetector", true},
        {"objectcounting", "com.varlo.rule.objectcounting", "urn:varlo-com:AlgorithmId:ObjectCounting:1",
         "com.varlo.engine.objecttracker", true},
        {"camerasabotage", "com.varlo.rule.camerasabotage", "urn:varlo-com:AlgorithmId:CameraSabotage:1",
         "com.varlo.engine.sabotagedetector", false, false},
        {"loitering", "com.varlo.rule.loiteringdetection", "urn:varlo-com:AlgorithmId:LoiteringDetection:1",
         "com.varlo.engine.objecttracker", false},
        {"directionalmotion", "com.varlo.rule.directionalmotion",
         "urn:varlo-com:AlgorithmId:DirectionalMotion:1", "com.varlo.engine.directionalmotion", true},
        {"objectremoval", "com.varlo.rule.objectremoval", "urn:varlo-com:AlgorithmId:ObjectRemoval:1",
         "com.varlo.engine.objectremoval", true},
        {"abandonedobject", "com.varlo.rule.abandonedobject", "urn:varlo-com:AlgorithmId:AbandonedObject:1",
         "com.varlo.engine.abandonedobject", true},
        {"stoppedvehicle", "com.varlo.rule.stoppedvehicle", "urn:varlo-com:AlgorithmId:StoppedVehicle:1",
         "com.varlo.engine.stoppedvehicle", true},
    };
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
    analytics::Document doc;
    return doc.ParseString(xml) ? doc.GetSingleValue(query, nullptr) : "not XML: " + xml;
}

std::size_t CountAt(const std::string& xml, const std::string& query)
{
    analytics::Document doc;
    doc.ParseString(xml);
    const std::vector<analytics::DocumentNode*> nodes = doc.SelectNodes(query, nullptr);
    for (const analytics::DocumentNode* node : nodes)
        delete node;
    return nodes.size();
}

std::string Canonical(const std::string& xml)
{
    analytics::Document doc;
    if (!doc.ParseString(xml))
        return "not XML: " + xml;
    return std::regex_replace(doc.DumpToString(), std::regex(">\\s+<"), "><");
}

} // namespace conversiontest
