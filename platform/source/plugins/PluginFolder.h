#pragma once

#include <analytics/PluginManager.h>

#include "files/File.h"
#include "threads/Mutex.h"

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

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

// As a manifest names them, in the order of PluginType.
inline constexpr std::array kPluginTypes = {"source", "engine", "rule", "sink"};

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

using PluginProblems = std::vector<PluginProblem>;

// Reads the plug-in in the folder `home`. False if its manifest can't be used. `problems` gets what is wrong
// with it, and with its other files. Throws AnalyticsFault if the system is too short of means to tell.
bool ReadPlugin(const std::string& home, Plugin& plugin, PluginProblems& problems);

// Reads the text of a manifest.xml. Nothing if it can't be used; `error` then says why. `home` stays
// for the caller to fill.
std::optional<ManifestFields> ReadManifest(const std::string& text, xml::SyntaxError& error);

// The plug-ins as they were found, in their order. Once it is filled, any thread.
class PluginCatalog
{
  public:
    // Unless another plug-in already answers to its Id() or Alias(); `problems` then says so.
    void Add(Plugin plugin, PluginProblems& problems);

    // By Id() or Alias(); null if there is none.
    const Plugin* Find(const std::string& id) const;
    const std::vector<Plugin>& All() const { return m_plugins; }

  private:
    std::vector<Plugin> m_plugins;
    std::unordered_map<std::string, std::size_t> m_index;
};

// Tells whether something has changed in a set of folders since they were added. The kernel tells, at
// the cost of one read per question. What it can't tell is compared by stamps: where a path leads that
// runs through a link, folders on a network, everything if the kernel grants no watch.
//
// After a change it has served: a new one is made, the folders are added, and only then read, so that
// nothing falls between. One thread at a time.
class FolderWatch
{
  public:
    // `byStamps`: don't ask the kernel.
    explicit FolderWatch(bool byStamps = false);

    // The folder's entries, what they hold, and whether `path` still leads to this folder.
    void AddRoot(const std::string& path);
    // The same for a folder below; of the entries that are links, those named in `files`.
    void AddFolder(const std::string& path, std::span<const char* const> files);

    bool Changed();

  private:
    struct Place
    {
        std::string path;
        FileStamp stamp;
        bool watched; // only whether the path leads to the same file is to be compared
    };

    bool Watch(const std::string& path);
    void Compare(const std::string& path, bool watched);

    FileHandle m_events;
    std::vector<Place> m_places;
    bool m_young = false; // a compared stamp can't be told from that of a change right after it
};

// The plug-in folder and what was last found in it. Any thread.
class PluginFolder
{
  public:
    // `byStamps`: see FolderWatch.
    explicit PluginFolder(std::string path, bool byStamps = false)
        : m_path(std::move(path)), m_byStamps(byStamps)
    {
    }

    // The plug-ins as the folder holds them now; none if there is no folder. What is wrong with one is
    // said on standard error once, and so is its end. Throws AnalyticsFault if the folder can't be read.
    std::shared_ptr<const PluginCatalog> Current();
    // What is wrong in the folder now, said nowhere. Throws as Current() does.
    std::vector<std::string> Problems();

  private:
    using ProblemMap = std::map<std::string, PluginProblems>; // by the folder that has them

    std::shared_ptr<const PluginCatalog> Scan(ProblemMap& problems) ANALYTICS_REQUIRES(m_lock);
    std::vector<std::string> Homes(ProblemMap& problems) const;
    void Tell(ProblemMap problems) ANALYTICS_REQUIRES(m_lock);

    const std::string m_path;
    const bool m_byStamps;
    Mutex m_lock;
    std::unique_ptr<FolderWatch> m_watch ANALYTICS_GUARDED_BY(m_lock);
    std::shared_ptr<const PluginCatalog> m_catalog ANALYTICS_GUARDED_BY(m_lock);
    ProblemMap m_told ANALYTICS_GUARDED_BY(m_lock);
};

} // namespace analytics::platform
