#include <AnalyticsApi.h>
#include <SoapIO.h>
#include <SoapRequest.h>

#include <analytics/Mutex.h>
#include <analytics/Settings.h>

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <ios>
#include <memory>
#include <sstream>
#include <string>

namespace
{

constexpr int kDefaultBacklog = 128;
constexpr unsigned int kPollSeconds = 2;

// Set once the service is to end and never cleared: a second start in the same process ends at its
// first test of the flag. Atomic because the run loop reads it without the lock.
std::atomic<bool> gShutdown{false};
analytics::Mutex gShutdownMutex(true); // guards the two accessors below

void Shutdown()
{
    const analytics::AutoLock<analytics::Mutex> lock(gShutdownMutex, true);
    gShutdown = true;
}

// No code calls it; it completes the small interface of the flag.
[[maybe_unused]] bool IsShutdown()
{
    const analytics::AutoLock<analytics::Mutex> lock(gShutdownMutex, true);
    return gShutdown;
}

class AnalyticsAPI
{
  public:
    static void Start();
    static void Stop();
};

void AnalyticsAPI::Start()
{
    int backlog = kDefaultBacklog;
    std::istringstream lportstream(analytics::Settings::GetValue("//backlog"), std::ios_base::in);
    int configured = 0;
    if (lportstream >> configured)
        backlog = configured;
    // Here, on this thread and before any connection can exist: the creation has no lock.
    analyticsapi::SoapRequest::GetProfileManager();
    try
    {
        const std::unique_ptr<analytics::kestrile::SoapIO> io(new analytics::kestrile::SoapIO);
        io->CreateServer("kestrile-server", 0);
        io->StartServer(static_cast<analytics::kestrile::UINT16>(backlog));
        while (!gShutdown)
            sleep(kPollSeconds);
    }
    catch (...)
    {
        std::puts("Bind failed...");
        gShutdown = true;
    }
}

void AnalyticsAPI::Stop()
{
    // In this order: the shared manager is gone up to two seconds before the server is.
    analyticsapi::SoapRequest::Shutdown();
    Shutdown();
}

} // namespace

bool StartVarloAnalyticsApi()
{
    AnalyticsAPI::Start();
    return true;
}

bool ShutdownVarloAnalyticsApi()
{
    AnalyticsAPI::Stop();
    return true;
}
