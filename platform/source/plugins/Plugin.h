#pragma once

#include <analytics/Manifest.h>

#include <array>
#include <optional>
#include <string>

namespace analytics::xml
{
struct SyntaxError;
}

namespace analytics::platform
{

// A file of a plug-in as it was read: its text, or why it can't be had.
struct PluginText
{
    std::string text;    // empty if there is no such file
    std::string failure; // a sentence; empty if the file was read or isn't there
};

struct Plugin
{
    Manifest manifest;
    PluginText engineDefault;  // engine.xml
    PluginText clientsDefault; // behavior.xml
    std::string factory;       // path of factory.so; empty if there is none
};

// The files that a plug-in's folder may hold.
inline constexpr const char* kManifestFile = "manifest.xml";
inline constexpr const char* kEngineFile = "engine.xml";
inline constexpr const char* kBehaviorFile = "behavior.xml";
inline constexpr const char* kFactoryFile = "factory.so";
inline constexpr std::array kPluginFiles = {kManifestFile, kEngineFile, kBehaviorFile, kFactoryFile};

// What is wrong with a plug-in's folder.
struct PluginProblem
{
    std::string sentence;
    std::size_t content = 0; // of the file that it is about: other content is another problem

    bool operator==(const PluginProblem&) const = default;
};

// Reads the plug-in in the folder `home`. False if its manifest can't be read; `problem` then says why.
// Throws AnalyticsFault if the system is too short of means to tell.
bool ReadPlugin(const std::string& home, Plugin& plugin, PluginProblem& problem);

// Reads the text of a manifest.xml. Nothing if it is no manifest; `error` then says why. `home` stays
// for the caller to fill.
std::optional<ManifestFields> ReadManifest(const std::string& text, xml::SyntaxError& error);

} // namespace analytics::platform
