#pragma once

#include "net/Server.h"

#include <tarno/osa/TcpServer.h>

#include <string>

namespace tarno::osa
{

// What operators' programs ask over HTTP: GET /healthz and GET /metrics. For one machine: everybody who
// reaches it may ask.
class OperatorsServer final : private ITcpSocketAccept
{
  public:
    // Throws SocketException.
    explicit OperatorsServer(const ListenOptions& options);

    const std::string& Url() const { return m_url; }

  private:
    void AcceptSocket(TcpSocket* socket) override;

    Server m_server;
    std::string m_url;
};

} // namespace tarno::osa
