#include "net/ServerSettings.h"

#include "access/AccessSettings.h"
#include "net/Connection.h"
#include "settings/Configuration.h"

#include <analytics/Settings.h>

#include <cstdint>
#include <limits>

namespace tarno::osa
{
namespace
{

using analytics::Settings;
using analytics::platform::CurrentConfiguration;

constexpr char kServerName[] = "kestrile-server";
constexpr int kDefaultPort = 8080;
constexpr int kDefaultMetricsPort = 9464;

bool IsName(const std::string& address, unsigned short port) { return address == kServerName && port == 0; }

// Of `element`, by the queries for its address and its port, both of which may be missing.
ListenOptions EndpointIn(const std::string& element, const std::string& addressKey,
                         const std::string& portKey, int defaultPort)
{
    const std::string address = Settings::GetValue(addressKey);
    const int port = Settings::GetValue(portKey, defaultPort);
    const bool valid = port >= 0 && port <= std::numeric_limits<std::uint16_t>::max();
    return {.address = address.empty() ? "127.0.0.1" : address,
            .port = static_cast<std::uint16_t>(valid ? port : defaultPort),
            .settledBy = '<' + element + "> in " + CurrentConfiguration().settingsFile};
}

std::size_t Positive(const std::string& key, std::size_t otherwise)
{
    const int value = Settings::GetValue(key, static_cast<int>(otherwise));
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

ListenOptions ConfiguredEndpoint(const std::string& address, unsigned short port)
{
    if (!IsName(address, port))
        return {.address = address, .port = port};
    if (const auto& listen = CurrentConfiguration().listen)
        return {.address = listen->address, .port = listen->port};
    const std::string query = EndpointQuery(kServerName);
    return EndpointIn("endpoint", query + "/@address", query + "/@port", kDefaultPort);
}

Access ConfiguredAccess(const std::string& address, unsigned short port)
{
    Access access;
    if (!IsName(address, port))
        return access;
    const AccessSettings settings = AccessInSettings(kServerName);
    CheckAccess(settings, ConfiguredEndpoint(address, port).address);
    if (!settings.certificate.empty())
        access.tls = std::make_unique<TlsSource>(settings);
    if (!settings.users.empty())
        access.passwords = std::make_unique<Authenticator>(settings.users);
    access.roles = true;
    return access;
}

std::optional<ListenOptions> ConfiguredMetrics()
{
    if (Settings::GetValues("//server/metrics").empty())
        return std::nullopt;
    ListenOptions options = EndpointIn("metrics", "(//server/metrics)[1]/@address",
                                       "(//server/metrics)[1]/@port", kDefaultMetricsPort);
    if (ReachedFromOutside(options.address) && Settings::GetValue("(//server/metrics)[1]/@insecure") != "1")
        throw AccessFault(
            CurrentConfiguration().settingsFile + ": " + options.address +
            " can be reached from outside, and everybody there could read the metrics; set the address "
            "of metrics to 127.0.0.1, or insecure=\"1\" if its network is guarded");
    return options;
}

} // namespace tarno::osa
