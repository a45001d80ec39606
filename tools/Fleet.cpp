#include "Fleet.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

namespace client
{
namespace
{

using Clock = std::chrono::steady_clock;

// From the first signal until the work that has begun is given up.
constexpr std::chrono::seconds kGrace(10);

int Checked(int descriptor)
{
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "No file descriptor is left");
    return descriptor;
}

int MillisecondsUntil(const std::optional<Clock::time_point>& end)
{
    if (!end)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*end - Clock::now()).count();
    return static_cast<int>(std::max<long long>(left, 0));
}

} // namespace

Signals::Signals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    m_descriptor = Checked(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    pthread_sigmask(SIG_BLOCK, &signals, &m_before);
}

Signals::~Signals()
{
    close(m_descriptor);
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

bool Signals::Take() const
{
    signalfd_siginfo unused;
    return read(m_descriptor, &unused, sizeof unused) > 0;
}

// Lives as long as the last thread.
struct Fleet::Shared
{
    Shared() : ended(Checked(eventfd(0, EFD_CLOEXEC))) {}
    ~Shared() { close(ended); }

    std::atomic<bool> stopped{false};
    std::atomic<bool> interrupted{false};
    std::atomic<std::size_t> next{0};
    std::mutex mutex; // done() is called under it, and not after `abandoned`
    bool abandoned = false;
    std::size_t threads = 0;
    int ended; // an event once there is no thread

    void Work(std::size_t last, const Fleet::Work& work, const Fleet::Work& done)
    {
        while (!stopped)
        {
            const std::size_t which = next++;
            if (which >= last)
                break;
            work(which);
            const std::lock_guard<std::mutex> lock(mutex);
            if (abandoned)
                return;
            done(which);
        }
        const std::lock_guard<std::mutex> lock(mutex);
        if (--threads == 0 && !abandoned)
            eventfd_write(ended, 1);
    }

    // Returns whether it was interrupted before.
    bool Interrupt()
    {
        stopped = true;
        return interrupted.exchange(true);
    }

    // Returns whether all threads have ended.
    bool Wait(const Signals& signals)
    {
        std::optional<Clock::time_point> end;
        for (;;)
        {
            pollfd waits[] = {{ended, POLLIN, 0}, {signals.Descriptor(), POLLIN, 0}};
            const int ready = poll(waits, 2, MillisecondsUntil(end));
            if (ready < 0 && errno == EINTR)
                continue;
            eventfd_t unused = 0;
            if (waits[0].revents != 0)
                return eventfd_read(ended, &unused) == 0;
            if (ready > 0)
                signals.Take();
            const bool again = Interrupt();
            if (ready == 0 || again)
                break;
            end = Clock::now() + kGrace;
        }
        const std::lock_guard<std::mutex> lock(mutex);
        abandoned = threads > 0;
        return !abandoned;
    }
};

Fleet::Fleet(std::size_t jobs) : m_jobs(jobs), m_shared(std::make_shared<Shared>()) {}

Fleet::~Fleet() = default;

bool Fleet::Run(const Signals& signals, std::size_t first, std::size_t last, const Work& work,
                const Work& done)
{
    const std::size_t count = last > first && !Stopped() ? std::min(last - first, m_jobs) : 0;
    if (count == 0)
        return true;
    m_shared->next = first;
    m_shared->threads = count;
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < count; ++i)
        threads.emplace_back([shared = m_shared, last, work, done] { shared->Work(last, work, done); });
    const bool ended = m_shared->Wait(signals);
    for (std::thread& thread : threads)
        if (ended)
            thread.join();
        else
            thread.detach();
    // One that came as the last work ended.
    if (signals.Take())
        m_shared->Interrupt();
    return ended;
}

void Fleet::Stop() { m_shared->stopped = true; }

bool Fleet::Stopped() const { return m_shared->stopped; }

bool Fleet::Interrupted() const { return m_shared->interrupted; }

} // namespace client
