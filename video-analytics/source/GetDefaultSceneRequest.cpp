#include <SceneRequests.h>

#include <AnalyticsId.h>
#include <XmlHelper.h>

#include <analytics/PluginManager.h>

namespace analyticsapi
{

int GetDefaultSceneRequest::DoExecute()
{
    const analytics::PluginManager pm;
    m_scene = varloapi::XmlHelper::RemoveXmlDeclaration(
        pm.GetVarloDefaultConfiguration(varloapi::AnalyticsId::SceneAnalyzerId()));
    return 0;
}

} // namespace analyticsapi
