#pragma once

#include <cstddef>
#include <functional>

namespace client
{

// Runs work(0) to work(count - 1), at most `jobs` at a time, and returns when all are done. After each,
// done(number of those done, which) is called, one at a time. Neither may throw.
void ForAll(std::size_t count, std::size_t jobs, const std::function<void(std::size_t)>& work,
            const std::function<void(std::size_t, std::size_t)>& done);

} // namespace client
