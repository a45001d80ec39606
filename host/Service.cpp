#include "Service.h"

#include <analytics/Platform.h>

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <exception>

namespace
{

constexpr int kWake = SIGUSR1;
constexpr std::chrono::milliseconds kWakeInterval(20);

std::atomic<bool> gEnded{false};

// Interrupts the sleep of the service's thread and does nothing else.
void HandleWake(int /*number*/) {}

} // namespace

Service::Service(const Library& library, int ended) : m_library(library)
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
        m_library.start();
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
    m_library.shutdown();
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
