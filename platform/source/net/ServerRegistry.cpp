#include "net/ServerRegistry.h"

#include "net/ServerLoop.h"
#include "threads/Lock.h"

#include <analytics/Platform.h>

namespace tarno::osa
{
using analytics::platform::Hold;
using analytics::platform::Lock;
namespace
{

struct Registry
{
    Lock lock;
    std::weak_ptr<ServerLoop> server ANALYTICS_GUARDED_BY(lock);
    std::string failure ANALYTICS_GUARDED_BY(lock);
};

Registry& TheRegistry()
{
    static Registry registry;
    return registry;
}

std::shared_ptr<ServerLoop> RegisteredServer()
{
    Registry& registry = TheRegistry();
    const Hold hold(registry.lock);
    return registry.server.lock();
}

} // namespace

void RegisterServer(const std::shared_ptr<ServerLoop>& server)
{
    Registry& registry = TheRegistry();
    const Hold hold(registry.lock);
    registry.server = server;
    registry.failure.clear();
}

void RegisterServerFailure(const std::string& sentence)
{
    Registry& registry = TheRegistry();
    const Hold hold(registry.lock);
    registry.failure = sentence;
}

} // namespace tarno::osa

namespace analytics::platform
{

std::string ServerFailure()
{
    tarno::osa::Registry& registry = tarno::osa::TheRegistry();
    const Hold hold(registry.lock);
    return registry.failure;
}

bool DrainServer(std::chrono::milliseconds limit)
{
    // Holding it keeps it alive while somebody else lets go of it.
    const auto server = tarno::osa::RegisteredServer();
    return server == nullptr || server->Drain(limit);
}

} // namespace analytics::platform
