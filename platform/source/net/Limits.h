#pragma once

#include <chrono>
#include <cstddef>

namespace tarno::osa
{

// What every connection may hold without asking; nearly every request fits.
constexpr std::size_t kFreeBytes = 16'384;

// What the clients of a server may use of it.
struct Limits
{
    std::size_t workers = 8; // requests that are served at a time; more of them wait
    std::size_t maxConnections = 1024;
    std::size_t maxRequestBytes = 4'194'304; // header and decoded body together
    // From accept to the last byte of a request, and from the first to the last byte of its answer.
    std::chrono::milliseconds requestTime = std::chrono::seconds(30);
};

// The settings below "//server" where they are positive numbers, the defaults above elsewhere.
// Throws AnalyticsFault if the settings can't be read.
Limits LimitsFromSettings();

// As many of `wanted` connections as the process may have files open now, less those that the rest
// of it needs; at least one.
std::size_t ConnectionsAllowed(std::size_t wanted);

} // namespace tarno::osa
