#include "Service.h"

#include <analytics/Platform.h>

#include <dlfcn.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace
{

constexpr int kWake = SIGUSR1;
constexpr std::chrono::milliseconds kWakeInterval(20);

std::atomic<bool> gEnded{false};

// Interrupts the sleep of the service's thread and does nothing else.
void HandleWake(int /*number*/) {}

void* Load(const std::string& file)
{
    // A name without a slash would be looked for in the system's folders alone.
    std::error_code unknown;
    const std::string path =
        std::filesystem::exists(file, unknown) ? std::filesystem::absolute(file).string() : file;
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw std::runtime_error(std::string("the API library can't be loaded: ") + dlerror() +
                                 ". Name another one with --library, or install libvarlo-analytics-api1");
    return library;
}

auto Find(const std::string& file, const char* name)
{
    void* const symbol = dlsym(Load(file), name);
    if (symbol == nullptr)
        throw std::runtime_error(file + " isn't an API library, since it has no " + name +
                                 ". Name another one with --library");
    return reinterpret_cast<bool (*)()>(symbol);
}

} // namespace

Service::Service(const std::string& file, int ended)
    : m_start(Find(file, "StartVarloAnalyticsApi")), m_shutdown(Find(file, "ShutdownVarloAnalyticsApi"))
{
    struct sigaction action = {};
    action.sa_handler = HandleWake;
    sigaction(kWake, &action, nullptr);
    m_thread = std::thread(&Service::Run, this, ended);
}

void Service::Run(int ended)
{
    try
    {
        m_start();
    }
    catch (const std::exception& e)
    {
        m_exception = e.what();
    }
    gEnded = true;
    kill(getpid(), ended);
}

void Service::End()
{
    m_shutdown();
    // The service looks at its shutdown flag every two seconds; a signal ends its sleep early.
    while (!gEnded)
    {
        pthread_kill(m_thread.native_handle(), kWake);
        std::this_thread::sleep_for(kWakeInterval);
    }
    m_thread.join();
}

std::string Service::Failure() const
{
    if (!m_exception.empty())
        return m_exception;
    const std::string failure = analytics::platform::ServerFailure();
    return failure.empty() ? "the service ended by itself" : failure;
}
