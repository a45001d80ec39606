#include <BehaviorRequests.h>

#include <AnalyticsId.h>
#include <ProfileDocConverter.h>
#include <XmlHelper.h>

#include <analytics/ProfileManager.h>

#include <memory>

namespace analyticsapi
{

int GetProfileBehaviorRequest::DoExecute()
{
    const std::string analyticsId = varloapi::AnalyticsId::AnalyticsIdFromVarloId(m_behaviorId);
    if (analyticsId.empty())
        return UnsupportedBehavior(m_soap);
    const std::string config = GetProfileManager()->GetConfig(m_profileId);
    if (config.empty())
        return UnsupportedBehavior(m_soap);
    const profile_conversion::ProfileParameters params;
    const std::unique_ptr<profile_conversion::ProfileDocConverter> conv(
        profile_conversion::Factory::CreateConverter(analyticsId));
    if (conv != nullptr)
        m_profileBehavior = varloapi::XmlHelper::RemoveXmlDeclaration(conv->FromOnvifToVarlo(config, params));
    return 0;
}

} // namespace analyticsapi
