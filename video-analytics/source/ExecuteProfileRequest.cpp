#include <ProfileRequests.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{

int ExecuteProfileRequest::DoExecute() { return GetProfileManager()->ExecuteProfile(m_profileId) ? 0 : -1; }

} // namespace analyticsapi
