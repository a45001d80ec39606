#include "Service.h"

#include "Expect.h"
#include "MemoryConnection.h"

#include <SoapRequest.h>

#include <ProfileDocConverter.h>

#include <analytics/PluginManager.h>
#include <analytics/ProfileManager.h>

#include <memory>

namespace fuzzing
{
namespace fs = std::filesystem;
using analyticsapi::SoapRequest;
using profile_conversion::ProfileDocConverter;

Service::Service() : m_template(m_installation.Path("template"))
{
    Fill();
    SoapRequest::Shutdown();
    fs::copy(m_installation.Path("state"), m_template);
}

Service::~Service() { SoapRequest::Shutdown(); }

void Service::Fill()
{
    analytics::ProfileManager& profiles = *SoapRequest::GetProfileManager();
    const analytics::PluginManager plugins;
    int profile = 0;
    profiles.CreateProfile(profile, "Day & <night>");
    analytics::ManifestArray manifests;
    plugins.GetManifests(manifests);
    for (const analytics::Manifest& manifest : manifests)
    {
        const std::string document = plugins.GetVarloDefaultConfiguration(manifest.Id());
        const std::unique_ptr<ProfileDocConverter> converter(
            profile_conversion::Factory::CreateConverter(manifest.Id()));
        if (document.empty() || converter == nullptr)
            continue;
        profile_conversion::ProfileParameters params;
        const std::string stored = converter->FromVarloToOnvif(document, params);
        if (manifest.Id().find(".rule.") == std::string::npos)
            profiles.SetEngineConfig(profile, manifest.Id(), stored);
        else
            profiles.SetRuleConfig(profile, manifest.Id(), stored, true);
    }
    profiles.SetCameraPreset(profile, "Gate");
    profiles.ExecuteProfile(profile);
    profiles.CreateProfile(profile, "");
}

std::string Service::Stamp() const
{
    std::string stamp;
    for (const auto& file : fs::directory_iterator(m_installation.Path("state")))
        stamp += file.path().filename().string() + ' ' + std::to_string(file.file_size()) + ' ' +
                 std::to_string(file.last_write_time().time_since_epoch().count()) + '\n';
    return stamp;
}

void Service::Reset()
{
    if (!m_untouched.empty() && m_untouched == Stamp())
        return;
    SoapRequest::Shutdown();
    fs::remove_all(m_installation.Path("state"));
    fs::copy(m_template, m_installation.Path("state"));
    SoapRequest::GetProfileManager();
    m_untouched = Stamp();
}

std::string Service::Answer(const std::string& request)
{
    MemoryConnection::Record record;
    m_transport.AcceptSocket(new MemoryConnection(request, record));
    Expect(record.deleted == 1, "the transport deletes its socket once", request);
    return record.sent;
}

} // namespace fuzzing
