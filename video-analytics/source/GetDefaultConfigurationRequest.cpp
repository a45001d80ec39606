#include <BehaviorRequests.h>

#include <AnalyticsId.h>
#include <XmlHelper.h>

#include <analytics/PluginManager.h>

namespace analyticsapi
{

int GetDefaultConfigurationRequest::DoExecute()
{
    const std::string analyticsId = varloapi::AnalyticsId::AnalyticsIdFromVarloId(m_behaviorId);
    if (analyticsId.empty())
        return UnsupportedBehavior(m_soap);
    const analytics::PluginManager pm;
    m_config = varloapi::XmlHelper::RemoveXmlDeclaration(pm.GetVarloDefaultConfiguration(analyticsId));
    return 0;
}

} // namespace analyticsapi
