#include <SceneRequests.h>

#include <AnalyticsId.h>
#include <ProfileDocConverter.h>

#include <analytics/ProfileManager.h>

#include <memory>

namespace analyticsapi
{
using varloapi::AnalyticsId;

int SetProfileSceneRequest::DoExecute()
{
    const std::unique_ptr<profile_conversion::ProfileDocConverter> conv(
        profile_conversion::Factory::CreateConverter(AnalyticsId::SceneAnalyzerId()));
    profile_conversion::ProfileParameters params;
    m_scene = conv->FromVarloToOnvif(m_scene, params);
    // Also what could not be read goes to the manager, as an empty text with an empty name: it is the
    // manager that refuses it, in words for the client. The preset is always empty (SceneAnalyzerConverter).
    const bool stored = GetProfileManager()->SetEngineConfig(
        m_profileId, AnalyticsId::SceneAnalyzerId(), m_scene, params.ProfileName(), params.CameraPreset());
    return stored ? 0 : -1;
}

} // namespace analyticsapi
