#pragma once

#include <analytics/PluginManager.h>
#include <analytics/ProfileManager.h>
#include <tarno/osa/TcpServer.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

// A platform layer whose answers a test scripts: the same headers as the real one, other code behind
// them. A test makes one fake::Platform, which then stands behind all classes of the platform.
namespace fake
{

class Profiles
{
  public:
    MOCK_METHOD(bool, CreateProfile, (int&, const std::string&));
    MOCK_METHOD(bool, DeleteProfile, (int));
    MOCK_METHOD(bool, ExecuteProfile, (int));
    MOCK_METHOD(bool, StopProfile, (int));
    MOCK_METHOD(bool, AlgorithmControl, (int));
    MOCK_METHOD(bool, GetActiveProfile, (int&));
    MOCK_METHOD(bool, GetProfileList, (std::vector<analytics::ProfileSummary>&));
    MOCK_METHOD(std::string, GetProfileName, (int));
    MOCK_METHOD(std::string, GetCameraPreset, (int));
    MOCK_METHOD(std::string, GetConfig, (int));
    MOCK_METHOD(bool, GetActiveRules, (int, std::vector<std::string>&));
    MOCK_METHOD(bool, SetRuleConfig, (int, const std::string&, const std::string&, bool));
    MOCK_METHOD(bool, DeleteRule, (int, const std::string&));
    MOCK_METHOD(bool, GetEngineConfig, (int, const std::string&, std::string&));
    MOCK_METHOD(bool, SetEngineConfig, (int, const std::string&, const std::string&));
    MOCK_METHOD(bool, SetEngineConfig,
                (int, const std::string&, const std::string&, const std::string&, const std::string&));
    MOCK_METHOD(bool, GetMDActiveState, ());
};

struct Plugin
{
    analytics::ManifestFields fields;
    std::string engineDocument;   // what GetDefaultConfiguration gives
    std::string behaviorDocument; // what GetVarloDefaultConfiguration gives
};

struct Platform
{
    Platform();
    ~Platform();
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;
    static Platform& Current();

    // Before each call of a manager or of the settings, but for the prefix, and when it has ended. The
    // first may throw; the call then doesn't take place.
    std::function<void()> onCall = [] {};
    std::function<void()> onReturn = [] {};
    std::vector<std::string> calls; // those that took place: the name, and what was handed over

    testing::NiceMock<Profiles> profiles;
    std::function<void()> onManagerMade = [] {}; // may throw
    int managersMade = 0;
    int managersDeleted = 0;

    std::map<std::string, std::vector<std::string>> settings; // by key
    std::uint32_t maxResource = 100;
    std::function<void()> onSetting = [] {}; // may throw

    std::vector<Plugin> plugins; // in the order of GetRulesManifests

    // The server: what was called, in order, and what the calls do beyond that (they may throw).
    std::vector<std::string> serverCalls;
    std::function<void()> onServerMade = [] {};
    std::function<void(tarno::osa::ITcpSocketAccept*)> onServerStarted = [](auto*) {};
    std::function<void()> onServerStopped = [] {};
};

} // namespace fake
