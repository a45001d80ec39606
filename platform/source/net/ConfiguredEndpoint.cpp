#include "net/ConfiguredEndpoint.h"

#include "Runtime.h"

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

} // namespace

Endpoint ConfiguredEndpoint(const std::string& address, unsigned short port)
{
    if (address != kServerName || port != 0)
        return {address, port};
    const auto& listen = analytics::platform::CurrentConfiguration().listen;
    return listen.has_value() ? *listen : EndpointInSettings();
}

} // namespace tarno::osa
