#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

// What the settings say below "//server". All of it throws AnalyticsFault if the settings can't be read.
namespace tarno::osa
{

struct Access;

// What the clients of a server may use of it.
struct Limits
{
    std::size_t workers = 8; // requests that are served at a time; more of them wait
    std::size_t maxConnections = 1024;
    std::size_t maxRequestBytes = 4'194'304; // header and decoded body together
    // From accept to the last byte of a request, and from the first to the last byte of its answer.
    std::chrono::milliseconds requestTime = std::chrono::seconds(30);
};

struct ListenOptions
{
    std::string address = "127.0.0.1"; // a numeric IPv4 or IPv6 address
    std::uint16_t port = 0;            // 0 takes a free port
    std::uint16_t backlog = 128;
    unsigned int bufferBytes = 0;       // send and receive buffer of each connection; 0 leaves the system's
    std::string scheme = "http";        // for the URL
    std::string settledBy = "--listen"; // where an operator chooses the address
};

// Those that are positive numbers; the defaults above for the others.
Limits LimitsFromSettings();

// Where a server called `address`:`port` listens. "kestrile-server" with port 0 is a name: the
// endpoint that the host was told, else the one of that name in the settings, else 127.0.0.1:8080.
// Anything else stands for itself.
ListenOptions ConfiguredEndpoint(const std::string& address, unsigned short port);

// Who may use that server. What the settings say holds for the named endpoint, also where the host was
// told another address; a server that stands for itself is open. Throws AccessFault if the settings or
// the files that they name can't be used, or would leave open what can be reached from outside.
Access ConfiguredAccess(const std::string& address, unsigned short port);

// Where operators' programs ask, if anywhere. Throws AccessFault, with what to do about it.
std::optional<ListenOptions> ConfiguredMetrics();

} // namespace tarno::osa
