#pragma once

#include "net/Server.h"

#include <tarno/osa/TcpServer.h>

#include <memory>
#include <optional>
#include <string>

namespace tarno::osa
{

// What operators' programs ask over HTTP: GET /healthz and GET /metrics. For one machine: everybody who
// reaches it may ask.
class OperatorsServer final : private ITcpSocketAccept
{
  public:
    // Where the settings have it listen, if anywhere. Throws AccessFault, with what to do about it.
    static std::optional<ListenOptions> Configured();
    // Null if the settings name none. Throws AccessFault or SocketException, with what to do about it.
    static std::unique_ptr<OperatorsServer> FromSettings();
    // Throws SocketException.
    explicit OperatorsServer(const ListenOptions& options);

    const std::string& Url() const { return m_url; }

  private:
    void AcceptSocket(TcpSocket* socket) override;

    Server m_server;
    std::string m_url;
};

// The whole answer to a request, of which the first line counts.
std::string OperatorsAnswer(const std::string& request);

} // namespace tarno::osa
