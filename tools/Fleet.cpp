#include "Fleet.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace client
{

void ForAll(std::size_t count, std::size_t jobs, const std::function<void(std::size_t)>& work,
            const std::function<void(std::size_t, std::size_t)>& done)
{
    std::atomic<std::size_t> next{0};
    std::mutex mutex;
    std::size_t finished = 0;
    const auto run = [&]
    {
        for (std::size_t which = next++; which < count; which = next++)
        {
            work(which);
            const std::lock_guard<std::mutex> lock(mutex);
            done(++finished, which);
        }
    };
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < std::min(count, jobs); ++i)
        threads.emplace_back(run);
}

} // namespace client
