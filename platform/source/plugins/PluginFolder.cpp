#include "plugins/PluginFolder.h"

#include <analytics/Faults.h>

#include "files/StandardError.h"

#include <linux/magic.h>
#include <sys/inotify.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <system_error>

namespace analytics::platform
{
namespace
{
constexpr std::uint32_t kEvents = IN_ATTRIB | IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_DELETE_SELF |
                                  IN_MODIFY | IN_MOVE_SELF | IN_MOVED_FROM | IN_MOVED_TO;

// Changes made elsewhere raise no event on these: AFS, CIFS, Coda, FUSE, NFS, SMB, SMB2, 9P.
constexpr std::array<std::uint32_t, 8> kRemote = {AFS_SUPER_MAGIC, 0xff534d42,      CODA_SUPER_MAGIC,
                                                  0x65735546,      NFS_SUPER_MAGIC, SMB_SUPER_MAGIC,
                                                  0xfe534d42,      V9FS_MAGIC};

bool Remote(const std::string& path)
{
    struct statfs status = {};
    return statfs(path.c_str(), &status) == 0 &&
           std::ranges::find(kRemote, static_cast<std::uint32_t>(status.f_type)) != kRemote.end();
}

bool IsLink(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_symlink(path, error);
}
} // namespace

FolderWatch::FolderWatch(bool byStamps) : m_events(byStamps ? -1 : inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

bool FolderWatch::Watch(const std::string& path)
{
    return m_events && !Remote(path) && inotify_add_watch(m_events.Get(), path.c_str(), kEvents) >= 0;
}

void FolderWatch::Compare(const std::string& path, bool watched)
{
    m_places.push_back({path, StampOf(path), watched});
    const FileStamp& stamp = m_places.back().stamp;
    m_young = m_young || (!watched && stamp.error == 0 && !Settled(stamp));
}

void FolderWatch::AddRoot(const std::string& path) { Compare(path, Watch(path)); }

void FolderWatch::AddFolder(const std::string& path, std::span<const char* const> files)
{
    const bool watched = Watch(path);
    if (!watched || IsLink(path))
        Compare(path, watched);
    for (const char* name : files)
    {
        const std::string file = path + '/' + name;
        if (!watched || IsLink(file))
            Compare(file, Watch(file));
    }
}

bool FolderWatch::Changed()
{
    // Which event doesn't matter, not even that there were too many to keep.
    alignas(inotify_event) char buffer[4096];
    if (m_events && (read(m_events.Get(), buffer, sizeof buffer) >= 0 || errno != EAGAIN))
        return true;
    return m_young || std::ranges::any_of(m_places,
                                          [](const Place& place)
                                          {
                                              const FileStamp now = StampOf(place.path);
                                              return place.watched
                                                         ? FileIdentity(now) != FileIdentity(place.stamp)
                                                         : now != place.stamp;
                                          });
}

void PluginCatalog::Add(Plugin plugin, PluginProblems& problems)
{
    const std::string names[] = {plugin.manifest.Id(), plugin.manifest.Alias()};
    for (const std::string& name : names)
    {
        const Plugin* const other = Find(name);
        if (other == nullptr)
            continue;
        problems.push_back({plugin.manifest.Home() + ": the identifier " + name +
                            " belongs to the plug-in in " + other->manifest.Home() +
                            ". This plug-in is left out."});
        return;
    }
    for (const std::string& name : names)
        if (!name.empty())
            m_index.emplace(name, m_plugins.size());
    m_plugins.push_back(std::move(plugin));
}

const Plugin* PluginCatalog::Find(const std::string& id) const
{
    const auto found = m_index.find(id);
    return found == m_index.end() ? nullptr : &m_plugins[found->second];
}

std::shared_ptr<const PluginCatalog> PluginFolder::Current()
{
    const MutexLock hold(m_lock);
    if (!m_catalog || m_watch->Changed())
    {
        m_catalog.reset();
        ProblemMap problems;
        auto catalog = Scan(problems);
        Tell(std::move(problems));
        m_catalog = std::move(catalog);
    }
    return m_catalog;
}

std::vector<std::string> PluginFolder::Problems()
{
    const MutexLock hold(m_lock);
    ProblemMap problems;
    m_catalog.reset(); // what is found goes untold
    Scan(problems);
    std::vector<std::string> sentences;
    for (auto& [folder, found] : problems)
        for (PluginProblem& problem : found)
            sentences.push_back(std::move(problem.sentence));
    return sentences;
}

// Watches first and reads then: what changes meanwhile shows at the next call.
std::shared_ptr<const PluginCatalog> PluginFolder::Scan(ProblemMap& problems)
{
    m_watch.reset(); // before the next one is made: the system grants few of them
    m_watch = std::make_unique<FolderWatch>(m_byStamps);
    m_watch->AddRoot(m_path);
    auto catalog = std::make_shared<PluginCatalog>();
    for (const std::string& home : Homes(problems))
    {
        m_watch->AddFolder(home, kPluginFiles);
        std::error_code error;
        if (!std::filesystem::is_directory(home, error))
            continue;
        Plugin plugin;
        PluginProblems found;
        if (ReadPlugin(home, plugin, found))
            catalog->Add(std::move(plugin), found);
        if (!found.empty())
            problems[home] = std::move(found);
    }
    return catalog;
}

// The folders that may hold plug-ins, and links: one that leads nowhere now may lead to a folder soon.
std::vector<std::string> PluginFolder::Homes(ProblemMap& problems) const
{
    std::vector<std::string> homes;
    std::error_code error;
    std::filesystem::directory_iterator entry(m_path, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
    {
        std::error_code unknown;
        if (entry->is_symlink(unknown) || entry->is_directory(unknown))
            homes.push_back(m_path + '/' + entry->path().filename().string());
    }
    if (error == std::errc::no_such_file_or_directory)
        problems[m_path] = {{m_path + ": there is no such folder, and so there are no plug-ins."}};
    else if (error == std::errc::not_a_directory)
        problems[m_path] = {{m_path + ": it isn't a folder, and so there are no plug-ins."}};
    else if (error)
        throw AnalyticsFault("The plug-in folder " + m_path + " can't be read: " + error.message() +
                             "; make it readable for the service, or name another one with --plugins");
    std::ranges::sort(homes);
    return homes;
}

void PluginFolder::Tell(ProblemMap problems)
{
    for (const auto& [folder, found] : problems)
        for (const PluginProblem& problem : found)
            if (std::ranges::find(m_told[folder], problem) == m_told[folder].end())
                Say(problem.sentence);
    for (const auto& [folder, found] : m_told)
        if (!problems.contains(folder))
            Say(folder + ": what was wrong there is no longer so.");
    m_told = std::move(problems);
}

} // namespace analytics::platform
