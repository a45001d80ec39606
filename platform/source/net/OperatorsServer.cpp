#include "net/OperatorsServer.h"

#include "access/AccessSettings.h"
#include "metrics/Health.h"
#include "metrics/Metrics.h"
#include "settings/Configuration.h"

#include <analytics/Platform.h>
#include <analytics/Settings.h>
#include <tarno/osa/TcpSocket.h>

#include <array>
#include <limits>
#include <sstream>

namespace tarno::osa
{
using analytics::Settings;
namespace
{

constexpr int kDefaultMetricsPort = 9464;

// A few programs that ask now and then.
Limits FewLimits()
{
    Limits limits;
    limits.workers = 2;
    limits.maxConnections = 16;
    limits.maxRequestBytes = 16'384;
    limits.requestTime = std::chrono::seconds(10);
    return limits;
}

constexpr const char* kSentence = "text/plain; charset=utf-8";
constexpr const char* kMetricsFormat = "text/plain; version=0.0.4; charset=utf-8";

std::string Response(const char* status, const std::string& body, const std::string& method,
                     const char* type = kSentence, const char* fields = "")
{
    return std::string("HTTP/1.1 ") + status + "\r\nContent-Type: " + type +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + fields +
           "Cache-Control: no-store\r\nConnection: close\r\n\r\n" + (method == "HEAD" ? "" : body);
}

} // namespace

std::optional<ListenOptions> OperatorsServer::Configured()
{
    if (Settings::GetValues("//server/metrics").empty())
        return std::nullopt;
    ListenOptions options;
    options.settledBy = "<metrics> in the settings document";
    if (const std::string address = Settings::GetValue("//server/metrics/@address"); !address.empty())
        options.address = address;
    const int port = Settings::GetValue("//server/metrics/@port", kDefaultMetricsPort);
    options.port = static_cast<std::uint16_t>(
        port >= 0 && port <= std::numeric_limits<std::uint16_t>::max() ? port : kDefaultMetricsPort);
    if (ReachedFromOutside(options.address) && Settings::GetValue("//server/metrics/@insecure") != "1")
        throw AccessFault(
            analytics::platform::CurrentConfiguration().settingsFile + ": " + options.address +
            " can be reached from outside, and everybody there could read the metrics; set the address "
            "of metrics to 127.0.0.1, or insecure=\"1\" if its network is guarded");
    return options;
}

std::unique_ptr<OperatorsServer> OperatorsServer::FromSettings()
{
    const auto options = Configured();
    return options ? std::make_unique<OperatorsServer>(*options) : nullptr;
}

OperatorsServer::OperatorsServer(const ListenOptions& options)
    : m_server(*this, FewLimits(), {}, true), m_url(m_server.Start(options))
{
}

void OperatorsServer::AcceptSocket(TcpSocket* socket)
{
    const std::unique_ptr<TcpSocket> owned(socket);
    std::array<char, 4096> room;
    const int count = socket->Recv(room.data(), room.size(), 0);
    const std::string answer = OperatorsAnswer({room.data(), static_cast<std::size_t>(count)});
    socket->SendAll(answer.data(), static_cast<unsigned int>(answer.size()));
}

std::string OperatorsAnswer(const std::string& request)
{
    std::istringstream line(request);
    std::string method;
    std::string target;
    line >> method >> target;
    const std::string path = target.substr(0, target.find('?'));
    if (path == "/metrics" && method == "GET")
        return Response("200 OK", analytics::platform::MetricsText(), method, kMetricsFormat);
    if (path == "/healthz" && (method == "GET" || method == "HEAD"))
    {
        const std::string failure = analytics::platform::Health(analytics::platform::kLongestHealthCheck,
                                                                analytics::platform::StoreHealth);
        return failure.empty() ? Response("200 OK", "ok", method)
                               : Response("503 Service Unavailable", failure + '\n', method);
    }
    if (path == "/metrics" || path == "/healthz")
        return Response("405 Method Not Allowed", "Ask by the method GET\n", method, kSentence,
                        path == "/metrics" ? "Allow: GET\r\n" : "Allow: GET, HEAD\r\n");
    return Response("404 Not Found", "There are /healthz and /metrics\n", method);
}

} // namespace tarno::osa
