#pragma once

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <climits>

namespace analytics::platform
{

// Something that is said once, and that any number of threads wait for. It goes straight to the kernel:
// who wakes takes no lock, and who waits sleeps at once, where the library's own wait first gives way to
// other threads several times. Any thread.
class Signal
{
  public:
    void Wait() const
    {
        while (m_said.load(std::memory_order_acquire) == 0)
            syscall(SYS_futex, &m_said, FUTEX_WAIT_PRIVATE, 0, nullptr, nullptr, 0);
    }
    void Say()
    {
        m_said.store(1, std::memory_order_release);
        syscall(SYS_futex, &m_said, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
    }

  private:
    static_assert(sizeof(std::atomic<int>) == sizeof(int), "what the kernel looks at");
    std::atomic<int> m_said = 0;
};

} // namespace analytics::platform
