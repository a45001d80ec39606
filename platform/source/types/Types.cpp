// The out-of-line parts of the platform's small types: whoever catches or copies one across the
// library's border meets the same type information.

#include <analytics/Faults.h>
#include <analytics/Manifest.h>
#include <tarno/osa/SocketException.h>
#include <tarno/osa/TcpServer.h>
#include <tarno/osa/TcpSocket.h>

namespace analytics
{

ClientFault::~ClientFault() = default;
AnalyticsFault::~AnalyticsFault() = default;

Manifest::Manifest() = default;
Manifest::Manifest(const Manifest&) = default;
Manifest::Manifest(Manifest&&) noexcept = default;
Manifest& Manifest::operator=(const Manifest&) = default;
Manifest& Manifest::operator=(Manifest&&) noexcept = default;
Manifest::~Manifest() = default;

Manifest::Manifest(const ManifestFields& fields)
    : m_id(fields.id),
      m_alias(fields.alias),
      m_name(fields.name),
      m_home(fields.home),
      m_fixedCameraPosition(fields.fixedCameraPosition),
      m_resourceRequirement(fields.resourceRequirement),
      m_dependencies(fields.dependencies),
      m_type(fields.type),
      m_supportsAdvancedMode(fields.supportsAdvancedMode)
{
}

} // namespace analytics

namespace tarno::osa
{

SocketException::~SocketException() = default;
TcpSocket::TcpSocket() = default;
TcpSocket::~TcpSocket() = default;
ITcpSocketAccept::~ITcpSocketAccept() = default;

} // namespace tarno::osa
