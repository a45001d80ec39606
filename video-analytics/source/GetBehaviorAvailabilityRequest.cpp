#include <AvailabilityRequests.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{

int GetBehaviorAvailabilityRequest::DoExecute()
{
    std::vector<std::string> activeRules;
    // The result doesn't matter: the list as the manager leaves it is used.
    if (m_profileId >= 0)
        GetProfileManager()->GetActiveRules(m_profileId, activeRules);
    return GetAvailabilities(activeRules);
}

} // namespace analyticsapi
