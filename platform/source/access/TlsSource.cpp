#include "access/TlsSource.h"

#include "access/TakeOver.h"
#include "access/TlsContext.h"

namespace tarno::osa
{
using analytics::platform::Hold;
namespace
{

PemFile Pem(const analytics::platform::WatchedFile& file) { return {file.Path(), TextOf(file)}; }

} // namespace

TlsSource::TlsSource(const std::string& certificate, const std::string& privateKey,
                     const std::string& authority)
    : m_certificate(certificate), m_privateKey(privateKey)
{
    if (!authority.empty())
        m_authority.emplace(authority);
    Current();
}

std::shared_ptr<ssl_ctx_st> TlsSource::Current()
{
    const Hold hold(m_lock);
    // Each is looked at, whatever became of the others.
    bool changed = m_certificate.Renew();
    changed = m_privateKey.Renew() || changed;
    changed = (m_authority && m_authority->Renew()) || changed;
    if (changed)
        TakeOver(m_context, [this] { return Make(); });
    return m_context;
}

std::shared_ptr<ssl_ctx_st> TlsSource::Make() const
{
    if (!m_authority)
        return MakeTlsContext(Pem(m_certificate), Pem(m_privateKey), nullptr);
    const PemFile authority = Pem(*m_authority);
    return MakeTlsContext(Pem(m_certificate), Pem(m_privateKey), &authority);
}

} // namespace tarno::osa
