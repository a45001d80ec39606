#include "net/ConfiguredEndpoint.h"

#include "access/AccessSettings.h"
#include "settings/Configuration.h"

#include <analytics/Settings.h>

#include <cstdint>
#include <limits>

namespace tarno::osa
{
namespace
{

using analytics::Settings;
using analytics::platform::Endpoint;

constexpr char kServerName[] = "kestrile-server";
constexpr char kDefaultAddress[] = "127.0.0.1";
constexpr int kDefaultPort = 8080;

Endpoint EndpointInSettings()
{
    const std::string element = std::string("//server/endpoint[@name='") + kServerName + "']";
    const std::string address = Settings::GetValue(element + "/@address");
    const int port = Settings::GetValue(element + "/@port", kDefaultPort);
    const bool valid = port >= 0 && port <= std::numeric_limits<std::uint16_t>::max();
    return {address.empty() ? kDefaultAddress : address,
            static_cast<std::uint16_t>(valid ? port : kDefaultPort)};
}

bool IsName(const std::string& address, unsigned short port) { return address == kServerName && port == 0; }

} // namespace

Endpoint ConfiguredEndpoint(const std::string& address, unsigned short port)
{
    if (!IsName(address, port))
        return {address, port};
    const auto& listen = analytics::platform::CurrentConfiguration().listen;
    return listen.has_value() ? *listen : EndpointInSettings();
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

} // namespace tarno::osa
