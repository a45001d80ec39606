#include "FakePlatform.h"

#include <analytics/PluginManager.h>
#include <analytics/ProfileManager.h>
#include <analytics/Settings.h>

#include "request/DocumentLimit.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <sstream>
#include <utility>

namespace fake
{
namespace
{
Platform* gPlatform = nullptr;

// One call of the platform, for as long as the expression that makes it.
struct Call
{
    template <class... Arguments>
    explicit Call(const Arguments&... nameAndArguments)
    {
        Platform::Current().onCall();
        std::ostringstream text;
        const char* between = "";
        ((text << std::exchange(between, " ") << nameAndArguments), ...);
        Platform::Current().calls.push_back(text.str());
    }
    ~Call() { Platform::Current().onReturn(); }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
    Profiles* operator->() const { return &Platform::Current().profiles; }
};

const Plugin* Find(const char* operation, const std::string& id)
{
    const Call call(operation, id);
    const auto& plugins = Platform::Current().plugins;
    const auto it = std::find_if(plugins.begin(), plugins.end(),
                                 [&](const Plugin& plugin)
                                 { return plugin.fields.id == id || plugin.fields.alias == id; });
    return it == plugins.end() ? nullptr : &*it;
}

std::vector<std::string> Setting(const std::string& key)
{
    const Call call("Settings", key);
    Platform::Current().onSetting();
    const auto it = Platform::Current().settings.find(key);
    return it == Platform::Current().settings.end() ? std::vector<std::string>() : it->second;
}
} // namespace

Platform::Platform()
{
    assert(gPlatform == nullptr);
    gPlatform = this;
}

Platform::~Platform() { gPlatform = nullptr; }

Platform& Platform::Current()
{
    assert(gPlatform != nullptr);
    return *gPlatform;
}

} // namespace fake

using fake::Platform;

namespace analytics
{

class ProfileStore
{
};

ProfileManager::ProfileManager()
{
    Platform::Current().onManagerMade();
    ++Platform::Current().managersMade;
}
ProfileManager::~ProfileManager() { ++Platform::Current().managersDeleted; }

bool ProfileManager::CreateProfile(int& id, const std::string& name)
{
    return fake::Call("CreateProfile", name)->CreateProfile(id, name);
}
bool ProfileManager::DeleteProfile(int id) { return fake::Call("DeleteProfile", id)->DeleteProfile(id); }
bool ProfileManager::ExecuteProfile(int id) { return fake::Call("ExecuteProfile", id)->ExecuteProfile(id); }
bool ProfileManager::StopProfile(int id) { return fake::Call("StopProfile", id)->StopProfile(id); }
bool ProfileManager::AlgorithmControl(int command)
{
    return fake::Call("AlgorithmControl", command)->AlgorithmControl(command);
}
bool ProfileManager::GetActiveProfile(int& id) const
{
    return fake::Call("GetActiveProfile")->GetActiveProfile(id);
}
bool ProfileManager::GetProfileList(std::vector<ProfileSummary>& list) const
{
    return fake::Call("GetProfileList")->GetProfileList(list);
}
std::string ProfileManager::GetProfileName(int id)
{
    return fake::Call("GetProfileName", id)->GetProfileName(id);
}
std::string ProfileManager::GetCameraPreset(int id)
{
    return fake::Call("GetCameraPreset", id)->GetCameraPreset(id);
}
std::string ProfileManager::GetConfig(int id) { return fake::Call("GetConfig", id)->GetConfig(id); }
bool ProfileManager::GetActiveRules(int id, std::vector<std::string>& rules)
{
    return fake::Call("GetActiveRules", id)->GetActiveRules(id, rules);
}
bool ProfileManager::SetRuleConfig(int profile, const std::string& id, const std::string& config, bool active)
{
    return fake::Call("SetRuleConfig", profile, id, config, active)
        ->SetRuleConfig(profile, id, config, active);
}
bool ProfileManager::DeleteRule(int profile, const std::string& id)
{
    return fake::Call("DeleteRule", profile, id)->DeleteRule(profile, id);
}
bool ProfileManager::GetEngineConfig(int profile, const std::string& id, std::string& config)
{
    return fake::Call("GetEngineConfig", profile, id)->GetEngineConfig(profile, id, config);
}
bool ProfileManager::SetEngineConfig(int profile, const std::string& id, const std::string& config)
{
    return fake::Call("SetEngineConfig", profile, id, config)->SetEngineConfig(profile, id, config);
}
bool ProfileManager::SetEngineConfig(int profile, const std::string& id, const std::string& config,
                                     const std::string& name, const std::string& preset)
{
    return fake::Call("SetEngineConfig", profile, id, config, name, preset)
        ->SetEngineConfig(profile, id, config, name, preset);
}
bool ProfileManager::GetMDActiveState() { return fake::Call("GetMDActiveState")->GetMDActiveState(); }

void PluginManager::GetManifest(Manifest& manifest, const std::string& id) const
{
    if (const fake::Plugin* const plugin = fake::Find("GetManifest", id))
        manifest = Manifest(plugin->fields);
}
void PluginManager::GetRulesManifests(ManifestArray& manifests) const
{
    const fake::Call call("GetRulesManifests");
    for (const fake::Plugin& plugin : Platform::Current().plugins)
        if (plugin.fields.type == "rule")
            manifests.emplace_back(plugin.fields);
}
std::string PluginManager::GetDefaultConfiguration(const std::string& id) const
{
    const fake::Plugin* const plugin = fake::Find("GetDefaultConfiguration", id);
    return plugin == nullptr ? std::string() : plugin->engineDocument;
}
std::string PluginManager::GetVarloDefaultConfiguration(const std::string& id) const
{
    const fake::Plugin* const plugin = fake::Find("GetVarloDefaultConfiguration", id);
    return plugin == nullptr ? std::string() : plugin->behaviorDocument;
}

std::string Settings::GetValue(const std::string& key)
{
    const std::vector<std::string> values = fake::Setting(key);
    return values.empty() ? std::string() : values.front();
}
int Settings::GetValue(const std::string& key, int defaultValue)
{
    const std::vector<std::string> values = fake::Setting(key);
    return values.empty() ? defaultValue : std::atoi(values.front().c_str());
}
std::vector<std::string> Settings::GetValues(const std::string& key) { return fake::Setting(key); }
std::uint32_t Settings::MaxResource()
{
    const fake::Call call("MaxResource");
    return Platform::Current().maxResource;
}
std::string Settings::OnvifPrefix() { return "tt"; }
std::string Settings::RulesTag()
{
    const fake::Call call("RulesTag");
    return "RuleEngineConfiguration";
}
std::string Settings::EnginePattern()
{
    const fake::Call call("EnginePattern");
    return "com.varlo.engine.";
}

bool platform::AdmitElements(std::size_t count) { return count <= 1'000'000; }
bool platform::AdmitAnother() { return true; }

} // namespace analytics

namespace tarno::osa
{

struct TcpServer::Loop
{
};

TcpServer::TcpServer(const char* address, unsigned short port)
{
    Platform::Current().serverCalls.push_back("TcpServer(" + std::string(address) + ", " +
                                              std::to_string(port) + ")");
    Platform::Current().onServerMade();
}
TcpServer::~TcpServer() { Platform::Current().serverCalls.emplace_back("~TcpServer()"); }
bool TcpServer::Listening() const { return false; }
void TcpServer::Stop()
{
    Platform::Current().serverCalls.emplace_back("Stop()");
    Platform::Current().onServerStopped();
}
void TcpServer::SetBufferSize(unsigned int bytes) const
{
    Platform::Current().serverCalls.push_back("SetBufferSize(" + std::to_string(bytes) + ")");
}
void TcpServer::Start(ITcpSocketAccept* acceptor, unsigned short backlog)
{
    Platform::Current().serverCalls.push_back("Start(" + std::to_string(backlog) + ")");
    Platform::Current().onServerStarted(acceptor);
}

} // namespace tarno::osa
