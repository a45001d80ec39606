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
using analytics::platform::Mutex;
using analytics::platform::MutexLock;

namespace
{

// What the host can ask of the platform about its server: the one started last.
struct Registry
{
    Mutex lock;
    std::weak_ptr<Server> server ANALYTICS_GUARDED_BY(lock);
    std::string failure ANALYTICS_GUARDED_BY(lock);
};

Registry& TheRegistry()
{
    static Registry registry;
    return registry;
}

void Register(const std::shared_ptr<Server>& server, const std::string& failure)
{
    Registry& registry = TheRegistry();
    const MutexLock hold(registry.lock);
    registry.server = server;
    registry.failure = failure;
}

std::shared_ptr<Server> RegisteredServer()
{
    Registry& registry = TheRegistry();
    const MutexLock hold(registry.lock);
    return registry.server.lock();
}

// Why one of the addresses in the settings can't be listened on, whatever else runs on this machine.
std::vector<std::string> MistakesInAddresses()
try
{
    CheckAddress({.address = ConfiguredEndpoint("kestrile-server", 0).address});
    if (const auto operators = ConfiguredMetrics())
        CheckAddress(*operators);
    return {};
}
catch (const std::runtime_error& fault)
{
    return {fault.what()};
}

} // namespace

// The server behind it, and what it will be started with.
class TcpServer::Loop
{
  public:
    Loop(std::string address, unsigned short port) : m_address(std::move(address)), m_port(port) {}

    void BufferSize(unsigned int bytes)
    {
        const MutexLock hold(m_lock);
        m_bufferBytes = bytes;
    }
    std::shared_ptr<Server> Running() const
    {
        const MutexLock hold(m_lock);
        return m_running;
    }
    // Returns the URL.
    std::string Start(ITcpSocketAccept* acceptor, unsigned short backlog);

  private:
    const std::string m_address;
    const unsigned short m_port;
    mutable Mutex m_lock;
    unsigned int m_bufferBytes ANALYTICS_GUARDED_BY(m_lock) = 0;
    std::shared_ptr<Server> m_running ANALYTICS_GUARDED_BY(m_lock);
    std::unique_ptr<OperatorsServer> m_operators ANALYTICS_GUARDED_BY(m_lock);
};

std::string TcpServer::Loop::Start(ITcpSocketAccept* acceptor, unsigned short backlog)
{
    const MutexLock hold(m_lock);
    if (acceptor == nullptr)
        throw SocketException(SocketException::kInvalid,
                              "The server was given nobody to serve its connections");
    if (m_running != nullptr && m_running->Listening())
        throw SocketException(SocketException::kInvalid, "The server is listening already; stop it first");
    const auto endpoint = ConfiguredEndpoint(m_address, m_port);
    Access access = ConfiguredAccess(m_address, m_port);
    const char* const scheme = access.tls == nullptr ? "http" : "https";
    // A thread that waits for memory, or for others' part of a commit, leaves its turn to others.
    analytics::platform::Event::OnWaiting(LeaderFollowers::Blocked);
    std::unique_ptr<OperatorsServer> operators;
    if (const auto metrics = access.roles ? ConfiguredMetrics() : std::nullopt)
    {
        operators = std::make_unique<OperatorsServer>(*metrics);
        analytics::platform::Say("metrics on " + operators->Url());
    }
    analytics::platform::OpenAuditTrail();
    const auto loop = std::make_shared<Server>(*acceptor, LimitsFromSettings(), std::move(access));
    std::string url = loop->Start({endpoint.address, endpoint.port, backlog, m_bufferBytes, scheme});
    m_running = loop;
    m_operators = std::move(operators);
    Register(loop, "");
    return url;
}

TcpServer::TcpServer(const char* address, unsigned short port) : m_loop(std::make_shared<Loop>(address, port))
{
}

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

void TcpServer::SetBufferSize(unsigned int bytes) const { m_loop->BufferSize(bytes); }

void TcpServer::Start(ITcpSocketAccept* acceptor, unsigned short backlog)
{
    std::string url;
    try
    {
        url = m_loop->Start(acceptor, backlog);
    }
    catch (const SocketException& failure)
    {
        Register(nullptr, failure.what());
        throw;
    }
    catch (const std::exception& failure)
    {
        Register(nullptr, failure.what());
        throw SocketException(SocketException::kBindError, failure.what());
    }
    if (const auto& onListening = analytics::platform::CurrentConfiguration().onListening)
        onListening(url);
}

} // namespace tarno::osa

namespace analytics::platform
{

std::string ServerFailure()
{
    tarno::osa::Registry& registry = tarno::osa::TheRegistry();
    const MutexLock hold(registry.lock);
    return registry.failure;
}

bool DrainServer(std::chrono::milliseconds limit)
{
    // Holding it keeps it alive while somebody else lets go of it.
    const auto server = tarno::osa::RegisteredServer();
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
    for (std::string& problem : PluginFolder(CurrentConfiguration().pluginFolder).Problems())
        mistakes.push_back(std::move(problem));
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
    if (const auto server = tarno::osa::RegisteredServer())
        server->RenewAccess();
    ReadPlugins();
    OpenAuditTrail();
    return MistakesInFiles(true).size();
}

} // namespace analytics::platform
