// The process that hosts the service: loads the API library, lends it a thread, ends it on SIGTERM or SIGINT,
// and has its files read again on SIGHUP.

#include "Options.h"
#include "Service.h"

#include <analytics/Platform.h>

#include <malloc.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <thread>

namespace
{

constexpr int kServiceEnded = SIGUSR2;
constexpr std::chrono::seconds kDrainLimit(5);
// Of the allocator. Each request takes a context of the SOAP runtime, 164 KiB: it is not to be mapped and
// unmapped each time, nor are several of them that end together to be given back.
constexpr int kMappedBytes = 256 * 1024;
constexpr int kKeptBytes = 512 * 1024;

// The signals that main() waits for. Blocked before any thread starts, so that all inherit it.
sigset_t BlockSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP, kServiceEnded})
        sigaddset(&signals, number);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signal(SIGPIPE, SIG_IGN);
    return signals;
}

// Each connection costs a file descriptor: take what the system allows.
void RaiseDescriptorLimit()
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < limit.rlim_max)
    {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

void SetUpAllocator()
{
    // A converted document leaves tens of thousands of small freed blocks behind. Kept aside for quick
    // reuse, they are joined all at once when a larger block is wanted, which doubles the time of large
    // documents.
    mallopt(M_MXFAST, 0);
    // By default there is an arena for each worker, which comes to keep what its largest document took: as
    // many as can be used at a time are enough.
    mallopt(M_ARENA_MAX, std::max(2, static_cast<int>(std::thread::hardware_concurrency())));
    // Otherwise both grow with the largest block that was ever freed, and with them what the process keeps.
    mallopt(M_MMAP_THRESHOLD, kMappedBytes);
    mallopt(M_TRIM_THRESHOLD, kKeptBytes);
}

// By the protocol of sd_notify(3), which is promised to stay: a datagram to the socket that systemd names.
// Whoever starts the service otherwise names none.
void TellSystemd(const std::string& state)
{
    const char* const named = std::getenv("NOTIFY_SOCKET");
    const std::string path = named == nullptr ? "" : named;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() > sizeof address.sun_path)
        return;
    path.copy(address.sun_path, path.size());
    if (path[0] == '@') // of the abstract namespace, whose names begin with a zero
        address.sun_path[0] = '\0';
    const int sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sendto(sender, state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address),
           static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size()));
    close(sender);
}

void ReportListening(const std::string& url)
{
    std::fprintf(stderr, "listening on %s\n", url.c_str());
    TellSystemd("READY=1\nSTATUS=Listening on " + url);
}

void Report(const std::string& sentence)
{
    std::fprintf(stderr, "varlo-analytics-host: %s\n", sentence.c_str());
}

// Copies of the store, for which nothing else has to be there. The sentence on what was done; none for a
// service.
std::string Maintain(const Options& options)
{
    const std::string& state = options.platform.stateFolder;
    if (!options.backup.empty())
        return analytics::platform::BackUpStore(state, options.backup);
    if (!options.restore.empty())
        return analytics::platform::RestoreStore(state, options.restore);
    return "";
}

// Ends the service by nothing that is read.
void Reload()
{
    try
    {
        const std::size_t mistakes = analytics::platform::Reload();
        Report("settings, users, certificates and plug-ins were read again" +
               (mistakes == 0 ? ", and nothing is wrong with them"
                              : "; what is wrong with them (" + std::to_string(mistakes) +
                                    (mistakes == 1 ? " mistake" : " mistakes") +
                                    ") doesn't count, and --check names it"));
    }
    catch (const std::exception& e)
    {
        Report(e.what());
    }
}

int Run(Options options)
{
    if (const std::string done = Maintain(options); !done.empty())
    {
        Report(done);
        return 0;
    }
    const sigset_t signals = BlockSignals();
    RaiseDescriptorLimit();
    SetUpAllocator();
    options.platform.onListening = ReportListening;
    analytics::platform::Configure(options.platform);
    const bool sound = analytics::platform::CheckConfiguration(options.check);
    if (options.check)
        return sound ? 0 : 1;
    if (options.recover)
        Report(analytics::platform::RecoverStore(options.platform.stateFolder));
    Service service(options.library, kServiceEnded);

    int received = 0;
    while (sigwait(&signals, &received) == 0 && received == SIGHUP)
        Reload();
    if (received == kServiceEnded)
    {
        service.End();
        Report(service.Failure());
        return 1;
    }
    TellSystemd("STOPPING=1");
    // First no request, then no manager: the library destroys it before it stops its server.
    if (analytics::platform::DrainServer(kDrainLimit))
        service.End();
    else
    {
        Report("requests were still in progress after " + std::to_string(kDrainLimit.count()) +
               " seconds; they get no answer");
        // Nothing is destroyed that they stand on. What a client was told is on the disk.
        std::_Exit(0);
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    auto options = ReadOptions(argc, argv);
    if (const int* const code = std::get_if<int>(&options))
        return *code;
    try
    {
        return Run(std::get<Options>(std::move(options)));
    }
    catch (const std::exception& e)
    {
        Report(e.what());
        return 1;
    }
}
