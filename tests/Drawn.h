#pragma once

#include <cstdlib>

// How many cases a test draws: `usual`, or what an environment variable says, for a longer run or a slower
// machine.
inline int Drawn(const char* variable, int usual)
{
    const char* const count = std::getenv(variable);
    return count == nullptr ? usual : std::atoi(count);
}
