#include "metrics/Health.h"

#include "threads/Mutex.h"

#include <cstdint>
#include <system_error>
#include <thread>

namespace analytics::platform
{
namespace
{

struct Checks
{
    Mutex lock;
    CondVar ended;
    bool running ANALYTICS_GUARDED_BY(lock) = false;
    std::uint64_t number ANALYTICS_GUARDED_BY(lock) = 0; // of those that have ended
    std::string failure ANALYTICS_GUARDED_BY(lock);      // of the last one
};

// Never destroyed: a check that hangs on a disk may outlive everything.
Checks& TheChecks()
{
    static Checks& checks = *new Checks;
    return checks;
}

void Run(const std::function<std::string()>& check)
{
    std::string failure;
    try
    {
        failure = check();
    }
    catch (const std::exception& fault)
    {
        failure = fault.what();
    }
    Checks& checks = TheChecks();
    const MutexLock hold(checks.lock);
    checks.running = false;
    ++checks.number;
    checks.failure = failure;
    checks.ended.Wake();
}

} // namespace

std::string Health(std::chrono::milliseconds limit, const std::function<std::string()>& check)
try
{
    Checks& checks = TheChecks();
    const auto until = std::chrono::steady_clock::now() + limit;
    const MutexLock hold(checks.lock);
    const std::uint64_t number = checks.number;
    if (!checks.running)
    {
        std::thread([check] { Run(check); }).detach();
        checks.running = true;
    }
    while (checks.number == number)
    {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return "The profile store doesn't answer; look at the disk that it is on";
        checks.ended.WaitFor(checks.lock, left);
    }
    checks.ended.Wake(); // whoever else waits
    return checks.failure;
}
catch (const std::system_error&)
{
    return "The service can't start a thread; allow the process more of them";
}

} // namespace analytics::platform
