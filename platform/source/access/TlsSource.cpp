#include "access/TlsSource.h"

#include "access/Users.h"
#include "files/StandardError.h"
#include "metrics/Metrics.h"

#include <algorithm>

namespace tarno::osa
{
using analytics::platform::Gauge;
using analytics::platform::MutexLock;
namespace
{

constexpr std::chrono::hours kDay(24);
constexpr int kDaysOfWarning = 30;

Gauge gCertificateEnds("varlo_certificate_expiry_timestamp_seconds",
                       "When the certificate of the endpoint ends, in seconds since 1970; 0 without TLS.");

std::string Date(std::time_t time)
{
    char text[32] = "";
    tm parts = {};
    std::strftime(text, sizeof text, "%Y-%m-%d", gmtime_r(&time, &parts));
    return text;
}

} // namespace

TlsSource::TlsSource(const AccessSettings& settings) : m_settings(settings)
{
    const MutexLock hold(m_lock);
    for (const std::string& file : {settings.certificate, settings.privateKey, settings.clientCertificates,
                                    settings.revoked, settings.users})
        if (!file.empty())
            m_files.try_emplace(file, file);
    Renew();
    m_roles = RolesInSettings();
    m_context = Make();
}

std::vector<std::string> TlsSource::Renew()
{
    std::vector<std::string> changed;
    for (auto& [path, file] : m_files) // each is looked at, whatever became of the others
        if (file.Renew())
            changed.push_back(path);
    return changed;
}

std::shared_ptr<TlsContext> TlsSource::Current()
{
    const MutexLock hold(m_lock);
    std::vector<std::string> changed = Renew();
    std::string roles = RolesInSettings();
    if (changed.empty() && roles == m_roles)
        return m_context;
    m_roles = std::move(roles);
    std::erase(changed, m_settings.users); // who is in it is for the authenticator to say
    try
    {
        m_context = Make();
        if (!changed.empty())
            m_warned = {}; // what is new may be about to end as well
        for (const std::string& path : changed)
            SayTakenOver(path);
    }
    catch (const AccessFault& fault)
    {
        SayNotTakenOver(fault);
    }
    return m_context;
}

TlsFiles TlsSource::Files() const
{
    const auto pem = [this](const std::string& path) ANALYTICS_NO_THREAD_ANALYSIS {
        return path.empty() ? std::nullopt : std::optional(PemFile{path, TextOf(m_files.at(path))});
    };
    return {*pem(m_settings.certificate), *pem(m_settings.privateKey), pem(m_settings.clientCertificates),
            pem(m_settings.revoked)};
}

std::shared_ptr<TlsContext> TlsSource::Make()
{
    auto context = MakeTlsContext(Files(), m_settings.sessionTime);
    gCertificateEnds.Set(static_cast<double>(context->EndOfCertificate()));
    return context;
}

void TlsSource::Warn(std::chrono::system_clock::time_point now)
{
    const MutexLock hold(m_lock);
    if (now - m_warned < kDay)
        return;
    m_warned = now;
    const std::time_t end = m_context->EndOfCertificate();
    const auto left = std::chrono::system_clock::from_time_t(end) - now;
    if (left < kDaysOfWarning * kDay)
        analytics::platform::Say(m_settings.certificate + ": the certificate " +
                                 (left.count() > 0 ? "ends" : "has ended") + " on " + Date(end) +
                                 "; put a new one in its place");
    const std::string expired = m_context->ExpiredRevocationList();
    if (!expired.empty())
        analytics::platform::Say(m_settings.revoked + ": the revocation list of " + expired +
                                 " has expired, and still counts; put a new one in its place");
}

} // namespace tarno::osa
