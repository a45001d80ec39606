// In place of the folder tls in a build WITH_TLS=OFF.
#include "access/Tls.h"
#include "access/AccessSettings.h"

namespace tarno::osa
{

std::shared_ptr<TlsContext> MakeTlsContext(const TlsFiles& files, std::chrono::seconds /*sessionTime*/)
{
    throw AccessFault(
        files.certificate.path +
        ": this service was built without TLS, so no certificate can be used; name none and listen on "
        "127.0.0.1, or install a build with TLS (WITH_TLS=ON)");
}

} // namespace tarno::osa
