#include <SceneRequests.h>

#include <AnalyticsId.h>
#include <ProfileDocConverter.h>
#include <XmlHelper.h>

#include <analytics/ProfileManager.h>

#include <memory>

namespace analyticsapi
{
using varloapi::AnalyticsId;
using varloapi::XmlHelper;

int GetProfileSceneRequest::DoExecute()
{
    if (!GetProfileManager()->GetEngineConfig(m_profileId, AnalyticsId::SceneAnalyzerId(), m_scene))
        return -1;
    // The engine's document holds neither the preset nor the name.
    profile_conversion::ProfileParameters params;
    params.CameraPreset(GetProfileManager()->GetCameraPreset(m_profileId));
    params.ProfileName(GetProfileManager()->GetProfileName(m_profileId));
    const std::unique_ptr<profile_conversion::ProfileDocConverter> conv(
        profile_conversion::Factory::CreateConverter(AnalyticsId::SceneAnalyzerId()));
    m_scene = XmlHelper::RemoveXmlDeclaration(conv->FromOnvifToVarlo(m_scene, params));
    return 0;
}

} // namespace analyticsapi
