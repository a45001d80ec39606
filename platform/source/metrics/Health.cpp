#include "metrics/Health.h"

#include "threads/Mutex.h"

#include <future>
#include <system_error>
#include <thread>

namespace analytics::platform
{
namespace
{

using Answer = std::shared_future<std::string>;

struct LastCheck
{
    Mutex lock;
    Answer answer ANALYTICS_GUARDED_BY(lock);
};

std::string FailureOf(const std::function<std::string()>& check)
{
    try
    {
        return check();
    }
    catch (const std::exception& failure)
    {
        return failure.what();
    }
}

bool IsReady(const Answer& answer, std::chrono::milliseconds limit)
{
    return answer.wait_for(limit) == std::future_status::ready;
}

// The one that runs, or a new one. Throws std::system_error without a thread.
Answer Check(const std::function<std::string()>& check)
{
    // Never destroyed: a check that hangs on a disk may outlive everything.
    static LastCheck& last = *new LastCheck;
    const MutexLock hold(last.lock);
    if (!last.answer.valid() || IsReady(last.answer, {}))
    {
        std::packaged_task<std::string()> task([check] { return FailureOf(check); });
        Answer answer = task.get_future();
        std::thread(std::move(task)).detach();
        last.answer = std::move(answer);
    }
    return last.answer;
}

} // namespace

std::string Health(std::chrono::milliseconds limit, const std::function<std::string()>& check)
try
{
    const Answer answer = Check(check);
    return IsReady(answer, limit) ? answer.get()
                                  : "The profile store doesn't answer; look at the disk that it is on";
}
catch (const std::system_error&)
{
    return "The service can't start a thread; allow the process more of them";
}

} // namespace analytics::platform
