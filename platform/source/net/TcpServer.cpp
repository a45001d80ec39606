#include <tarno/osa/TcpServer.h>

#include "access/AccessSettings.h"
#include "audit/AuditTrail.h"
#include "files/File.h"
#include "files/StandardError.h"
#include "net/OperatorsServer.h"
#include "net/Server.h"
#include "net/ServerSettings.h"
#include "threads/Mutex.h"

#include <analytics/PluginManager.h>
#include <tarno/osa/TcpSocket.h>

#include "plugins/PluginFolder.h"
#include "settings/Configuration.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tarno::osa
{
using analytics::platform::CurrentConfiguration;
using analytics::platform::Mutex;
using analytics::platform::MutexLock;

namespace
{

// What the host can ask of the platform about its server: the one started last.
Mutex gLastLock;
std::weak_ptr<Server> gLast ANALYTICS_GUARDED_BY(gLastLock);
std::string gLastFailure ANALYTICS_GUARDED_BY(gLastLock);

void SetLast(const std::shared_ptr<Server>& server, const std::string& failure)
{
    const MutexLock hold(gLastLock);
    gLast = server;
    gLastFailure = failure;
}

std::shared_ptr<Server> Last()
{
    const MutexLock hold(gLastLock);
    return gLast.lock();
}

// Why an address can't be listened on, whatever else runs on this machine, beyond what is wrong with the
// settings by themselves.
std::vector<std::string> MistakesInAddresses()
{
    std::vector<std::string> mistakes;
    const auto look = [&mistakes](auto use)
    {
        try
        {
            use();
        }
        catch (const std::runtime_error& fault)
        {
            mistakes.emplace_back(fault.what());
        }
    };
    if (CurrentConfiguration().listen)
        look([] { CheckAddress(ConfiguredEndpoint("kestrile-server", 0)); });
    look([] { ConfiguredMetrics(); });
    return mistakes;
}

} // namespace

// The server behind it, and what it will be started with.
struct TcpServer::Loop
{
    // Returns the URL.
    std::string Start(ITcpSocketAccept* acceptor, unsigned short backlog);
    std::shared_ptr<Server> Running()
    {
        const MutexLock hold(lock);
        return running;
    }

    const std::string address;
    const unsigned short port;
    Mutex lock = {};
    unsigned int bufferBytes ANALYTICS_GUARDED_BY(lock) = 0;
    std::shared_ptr<Server> running ANALYTICS_GUARDED_BY(lock) = {};
    std::unique_ptr<OperatorsServer> operators ANALYTICS_GUARDED_BY(lock) = {};
};

std::string TcpServer::Loop::Start(ITcpSocketAccept* acceptor, unsigned short backlog)
{
    const MutexLock hold(lock);
    if (acceptor == nullptr)
        throw SocketException(SocketException::kInvalid,
                              "The server was given nobody to serve its connections");
    if (running != nullptr && running->Listening())
        throw SocketException(SocketException::kInvalid, "The server is listening already; stop it first");
    ListenOptions options = ConfiguredEndpoint(address, port);
    Access access = ConfiguredAccess(address, port);
    options.backlog = backlog;
    options.bufferBytes = bufferBytes;
    options.scheme = access.tls == nullptr ? "http" : "https";
    // A thread that waits for memory, or for others' part of a commit, leaves its turn to others.
    analytics::platform::Event::OnWaiting(LeaderFollowers::Blocked);
    std::unique_ptr<OperatorsServer> forOperators;
    if (const auto metrics = access.roles ? ConfiguredMetrics() : std::nullopt)
    {
        forOperators = std::make_unique<OperatorsServer>(*metrics);
        analytics::platform::Say("metrics on " + forOperators->Url());
    }
    analytics::platform::OpenAuditTrail();
    const auto server = std::make_shared<Server>(*acceptor, LimitsFromSettings(), std::move(access));
    std::string url = server->Start(options);
    running = server;
    operators = std::move(forOperators);
    SetLast(server, "");
    return url;
}

TcpServer::TcpServer(const char* address, unsigned short port) : m_loop(new Loop{address, port}) {}

TcpServer::~TcpServer() { TcpServer::Stop(); }

bool TcpServer::Listening() const
{
    const auto running = m_loop->Running();
    return running != nullptr && running->Listening();
}

void TcpServer::Stop()
{
    if (const auto running = m_loop->Running())
        running->Stop();
}

void TcpServer::SetBufferSize(unsigned int bytes) const
{
    const MutexLock hold(m_loop->lock);
    m_loop->bufferBytes = bytes;
}

void TcpServer::Start(ITcpSocketAccept* acceptor, unsigned short backlog)
{
    std::string url;
    try
    {
        url = m_loop->Start(acceptor, backlog);
    }
    catch (const SocketException& failure)
    {
        SetLast(nullptr, failure.what());
        throw;
    }
    catch (const std::exception& failure)
    {
        SetLast(nullptr, failure.what());
        throw SocketException(SocketException::kBindError, failure.what());
    }
    if (const auto& onListening = CurrentConfiguration().onListening)
        onListening(url);
}

} // namespace tarno::osa

namespace analytics::platform
{

std::string ServerFailure()
{
    const MutexLock hold(tarno::osa::gLastLock);
    return tarno::osa::gLastFailure;
}

bool DrainServer(std::chrono::milliseconds limit)
{
    // Holding it keeps it alive while somebody else lets go of it.
    const auto server = tarno::osa::Last();
    return server == nullptr || server->Drain(limit);
}

namespace
{

std::vector<std::string> MistakesInFiles(bool all)
{
    const std::string& path = CurrentConfiguration().settingsFile;
    std::vector<std::string> mistakes = tarno::osa::MistakesInSettings(path, ReadFile(path).text);
    if (!all)
        return mistakes;
    const auto endpoint = tarno::osa::ConfiguredEndpoint("kestrile-server", 0);
    for (auto& found : {tarno::osa::MistakesInAccess(endpoint.address), tarno::osa::MistakesInAddresses()})
        mistakes.insert(mistakes.end(), found.begin(), found.end());
    try
    {
        for (std::string& problem : PluginFolder(CurrentConfiguration().pluginFolder).Problems())
            mistakes.push_back(std::move(problem));
    }
    catch (const AnalyticsFault& fault)
    {
        mistakes.emplace_back(fault.what());
    }
    return mistakes;
}

// Says what is wrong with them, once for each mistake until it has gone.
void ReadPlugins()
{
    try
    {
        ManifestArray manifests;
        PluginManager().GetManifests(manifests);
    }
    catch (const AnalyticsFault& fault)
    {
        Say(fault.what());
    }
}

} // namespace

bool CheckConfiguration(bool all)
{
    SettingsMistakesAreNamed();
    const std::vector<std::string> mistakes = MistakesInFiles(all);
    for (const std::string& mistake : mistakes)
        Say(mistake);
    if (!all)
        ReadPlugins();
    return mistakes.empty();
}

std::size_t Reload()
{
    RefreshSettings();
    if (const auto server = tarno::osa::Last())
        server->RenewAccess();
    ReadPlugins();
    OpenAuditTrail();
    return MistakesInFiles(true).size();
}

} // namespace analytics::platform
