#include "net/Limits.h"

#include <analytics/Settings.h>

#include <sys/resource.h>

#include <algorithm>
#include <string>

namespace tarno::osa
{
namespace
{

// Listening socket, event queue, profile store, plug-in files, the host's own.
constexpr std::size_t kFilesForTheRest = 64;

std::size_t Positive(const std::string& key, std::size_t otherwise)
{
    const int value = analytics::Settings::GetValue(key, 0);
    return value > 0 ? static_cast<std::size_t>(value) : otherwise;
}

} // namespace

Limits LimitsFromSettings()
{
    Limits limits;
    limits.workers = Positive("//server/workers", limits.workers);
    limits.maxConnections = Positive("//server/maxConnections", limits.maxConnections);
    limits.maxRequestBytes = Positive("//server/maxRequestBytes", limits.maxRequestBytes);
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limits.requestTime).count();
    limits.requestTime =
        std::chrono::seconds(Positive("//server/requestSeconds", static_cast<std::size_t>(seconds)));
    return limits;
}

std::size_t ConnectionsAllowed(std::size_t wanted)
{
    rlimit files = {};
    if (getrlimit(RLIMIT_NOFILE, &files) != 0 || files.rlim_cur == RLIM_INFINITY)
        return wanted;
    const auto all = static_cast<std::size_t>(files.rlim_cur);
    return std::min(wanted, all > kFilesForTheRest ? all - kFilesForTheRest : 1);
}

} // namespace tarno::osa
