#include <ProfileRequests.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{

int StopProfileRequest::DoExecute() { return GetProfileManager()->StopProfile(m_profileId) ? 0 : -1; }

} // namespace analyticsapi
