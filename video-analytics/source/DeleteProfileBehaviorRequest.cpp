#include <BehaviorRequests.h>

#include <AnalyticsId.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{

int DeleteProfileBehaviorRequest::DoExecute()
{
    const std::string analyticsId = varloapi::AnalyticsId::AnalyticsIdFromVarloId(m_behaviorId);
    if (analyticsId.empty())
        return UnsupportedBehavior(m_soap);
    return GetProfileManager()->DeleteRule(m_profileId, analyticsId) ? 0 : -1;
}

} // namespace analyticsapi
