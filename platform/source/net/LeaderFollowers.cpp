#include "net/LeaderFollowers.h"

#include <pthread.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tarno::osa
{
using analytics::platform::FileHandle;
using analytics::platform::MutexLock;
using Cause = EventHandler::Cause;
using Wish = EventHandler::Wish;
namespace
{

// The pool whose slot this thread has.
thread_local LeaderFollowers* gSlotOf = nullptr;

int Checked(int descriptor)
{
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category());
    return descriptor;
}

int Control(const FileHandle& epoll, int operation, int descriptor, std::uint32_t events, void* data)
{
    epoll_event event = {};
    event.events = events;
    event.data.ptr = data;
    return epoll_ctl(epoll.Get(), operation, descriptor, &event);
}

void Drain(const FileHandle& counter)
{
    std::uint64_t count = 0;
    while (read(counter.Get(), &count, sizeof count) < 0 && errno == EINTR)
    {
    }
}

} // namespace

LeaderFollowers::LeaderFollowers(std::size_t slots)
    : m_slots(slots),
      m_epoll(Checked(epoll_create1(EPOLL_CLOEXEC))),
      m_bell(Checked(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | EFD_SEMAPHORE))),
      m_timer(Checked(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)))
{
    // Handlers are known by their address; these two by that of their descriptor. A ring is for as many
    // threads as it says, the timer for one.
    Checked(Control(m_epoll, EPOLL_CTL_ADD, m_bell.Get(), EPOLLIN, const_cast<FileHandle*>(&m_bell)));
    Checked(
        Control(m_epoll, EPOLL_CTL_ADD, m_timer.Get(), EPOLLIN | EPOLLET, const_cast<FileHandle*>(&m_timer)));
}

LeaderFollowers::~LeaderFollowers() { Stop(); }

void LeaderFollowers::Start()
{
    const MutexLock hold(m_lock);
    while (m_threads.size() < m_slots + kSpare)
        AddThread();
}

void LeaderFollowers::AddThread()
{
    m_threads.emplace_back([this] { Run(); });
}

// TLS libraries write without MSG_NOSIGNAL: a peer that is gone is an error here and no signal, whatever the
// process does about that.
void LeaderFollowers::Run()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    for (Task task; Next(task); task = {})
        Do(std::move(task.handler), task.cause);
}

bool LeaderFollowers::Next(Task& task)
{
    for (;;)
    {
        if (m_stopped)
            return false;
        if ((m_queued != 0 && TakeReady(task)) || TakeEvent(task))
            return true;
    }
}

bool LeaderFollowers::TakeReady(Task& task)
{
    const MutexLock hold(m_lock);
    if (!m_queue.empty() && TakeFreeSlot())
    {
        task = {std::move(m_queue.front()), Cause::Slot};
        m_queue.pop_front();
    }
    else if (!m_ready.empty())
    {
        task = std::move(m_ready.front());
        m_ready.pop_front();
    }
    else
        return false;
    --m_queued;
    return true;
}

bool LeaderFollowers::TakeEvent(Task& task)
{
    epoll_event event = {};
    if (epoll_wait(m_epoll.Get(), &event, 1, -1) != 1)
        return false; // a signal
    if (event.data.ptr == &m_bell)
        Drain(m_bell);
    else if (event.data.ptr == &m_timer)
        Expire();
    else
    {
        const MutexLock hold(m_lock);
        task.cause = Cause::Ready;
        // Something else may have made it go on meanwhile.
        return Claim(static_cast<EventHandler*>(event.data.ptr), task);
    }
    return false;
}

void LeaderFollowers::Do(std::shared_ptr<EventHandler> handler, Cause cause)
{
    Wish wish = Step(*handler, cause);
    if (wish == Wish::Slot)
    {
        if (!TakeSlot(handler))
            return;
        wish = Step(*handler, Cause::Slot);
    }
    if (wish != Wish::Nothing)
        Wait(std::move(handler), wish);
}

Wish LeaderFollowers::Step(EventHandler& handler, Cause cause)
{
    gSlotOf = cause == Cause::Slot ? this : nullptr;
    Wish wish = Wish::Nothing;
    try
    {
        wish = handler.Continue(cause);
    }
    catch (const std::exception&)
    {
        // Memory ran short: this one ends, the others go on.
    }
    if (cause == Cause::Slot)
        --m_taken; // This thread takes the next of the queue.
    gSlotOf = nullptr;
    return wish;
}

bool LeaderFollowers::TakeFreeSlot()
{
    std::size_t taken = m_taken;
    while (taken < m_slots)
        if (m_taken.compare_exchange_weak(taken, taken + 1))
            return true;
    return false;
}

bool LeaderFollowers::TakeSlot(const std::shared_ptr<EventHandler>& handler)
{
    if (TakeFreeSlot())
        return true;
    const MutexLock hold(m_lock);
    m_queue.push_back(handler);
    ++m_queued;
    if (!TakeFreeSlot())
        return false;
    m_queue.pop_back(); // One was given up meanwhile.
    --m_queued;
    return true;
}

void LeaderFollowers::Blocked(bool begins)
{
    if (gSlotOf != nullptr)
        gSlotOf->LeaveSlot(begins);
}

void LeaderFollowers::LeaveSlot(bool leave)
{
    const MutexLock hold(m_lock);
    if (!leave)
    {
        ++m_taken; // more than there are, until one of them ends
        --m_blocked;
        return;
    }
    --m_taken;
    ++m_blocked;
    if (m_blocked <= kMostBlocked && m_threads.size() < m_slots + kSpare + m_blocked && !m_stopped)
        AddThread();
    if (!m_queue.empty())
        Ring(1);
}

void LeaderFollowers::Wait(std::shared_ptr<EventHandler> handler, Wish wish)
{
    const MutexLock hold(m_lock);
    if (m_stopped)
        return;
    if (wish == Wish::WakeUp && std::exchange(handler->m_woken, false))
        return Push({std::move(handler), Cause::Woken});
    if (m_ending && !std::exchange(handler->m_toldOfEnd, true))
        return Push({std::move(handler), Cause::Ending});
    EventHandler& waiting = *handler;
    if (!Register(waiting, wish))
        return;
    m_waiting.emplace(&waiting, std::move(handler));
    if (waiting.m_deadline == EventHandler::Clock::time_point::max())
        return;
    m_deadlines.emplace(waiting.m_deadline, &waiting);
    SetTimer();
}

bool LeaderFollowers::Register(EventHandler& handler, Wish wish)
{
    if (wish == Wish::WakeUp)
        return true;
    const std::uint32_t event = EPOLLONESHOT | (wish == Wish::Read ? EPOLLIN : EPOLLOUT);
    const int operation = handler.m_registered ? EPOLL_CTL_MOD : EPOLL_CTL_ADD;
    handler.m_registered = Control(m_epoll, operation, handler.Descriptor(), event, &handler) == 0;
    return handler.m_registered;
}

bool LeaderFollowers::Claim(EventHandler* handler, Task& task)
{
    const auto entry = m_waiting.find(handler);
    if (entry == m_waiting.end())
        return false;
    task.handler = std::move(entry->second);
    m_waiting.erase(entry);
    m_deadlines.erase({handler->m_deadline, handler});
    return true;
}

void LeaderFollowers::Wake(EventHandler& handler)
{
    const MutexLock hold(m_lock);
    Task task = {nullptr, Cause::Woken};
    if (Claim(&handler, task))
        Push(std::move(task));
    else
        handler.m_woken = true;
}

void LeaderFollowers::End()
{
    const MutexLock hold(m_lock);
    m_ending = true;
    while (!m_waiting.empty())
    {
        Task task = {nullptr, Cause::Ending};
        Claim(m_waiting.begin()->first, task);
        task.handler->m_toldOfEnd = true;
        Push(std::move(task));
    }
}

void LeaderFollowers::Push(Task task)
{
    m_ready.push_back(std::move(task));
    ++m_queued;
    Ring(1);
}

void LeaderFollowers::Ring(std::size_t threads)
{
    const std::uint64_t count = threads;
    while (write(m_bell.Get(), &count, sizeof count) < 0 && errno == EINTR)
    {
    }
}

void LeaderFollowers::SetTimer()
{
    if (m_deadlines.empty() || m_deadlines.begin()->first >= m_timerSet)
        return;
    m_timerSet = m_deadlines.begin()->first;
    const auto since = m_timerSet.time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(since);
    itimerspec time = {};
    time.it_value.tv_sec = seconds.count();
    time.it_value.tv_nsec = static_cast<long>(std::chrono::nanoseconds(since - seconds).count());
    timerfd_settime(m_timer.Get(), TFD_TIMER_ABSTIME, &time, nullptr);
}

void LeaderFollowers::Expire()
{
    Drain(m_timer);
    const MutexLock hold(m_lock);
    const EventHandler::Clock::time_point now = EventHandler::Clock::now();
    while (!m_deadlines.empty() && m_deadlines.begin()->first <= now)
    {
        Task task = {nullptr, Cause::Deadline};
        Claim(m_deadlines.begin()->second, task);
        Push(std::move(task));
    }
    m_timerSet = EventHandler::Clock::time_point::max();
    SetTimer();
}

std::size_t LeaderFollowers::Waiting()
{
    const MutexLock hold(m_lock);
    return m_waiting.size();
}

std::size_t LeaderFollowers::WaitingForSlot()
{
    const MutexLock hold(m_lock);
    return m_queue.size();
}

void LeaderFollowers::Stop()
{
    std::vector<std::thread> threads;
    {
        const MutexLock hold(m_lock);
        m_stopped = true;
        threads.swap(m_threads);
        Ring(threads.size());
    }
    for (std::thread& thread : threads)
        thread.join();
    // They tell their owner that they end, who may ask this pool for something: not under the lock.
    decltype(m_waiting) waiting;
    decltype(m_ready) ready;
    decltype(m_queue) queue;
    const MutexLock hold(m_lock);
    waiting.swap(m_waiting);
    ready.swap(m_ready);
    queue.swap(m_queue);
    m_queued = 0;
    m_deadlines.clear();
}

} // namespace tarno::osa
