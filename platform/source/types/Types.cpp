// The out-of-line parts of the platform's small types: whoever catches or derives from one across the
// library's border meets the same type information.

#include <analytics/Faults.h>
#include <tarno/osa/SocketException.h>
#include <tarno/osa/TcpServer.h>
#include <tarno/osa/TcpSocket.h>

namespace analytics
{

ClientFault::~ClientFault() = default;
AnalyticsFault::~AnalyticsFault() = default;

} // namespace analytics

namespace tarno::osa
{

SocketException::SocketException(SocketError error, const std::string& what)
    : std::runtime_error(what), m_error(error)
{
}
SocketException::~SocketException() = default;
SocketException::SocketError SocketException::GetError() const { return m_error; }
TcpSocket::TcpSocket() = default;
TcpSocket::~TcpSocket() = default;
ITcpSocketAccept::~ITcpSocketAccept() = default;

} // namespace tarno::osa
