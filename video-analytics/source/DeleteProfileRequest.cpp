#include <ProfileRequests.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{

int DeleteProfileRequest::DoExecute() { return GetProfileManager()->DeleteProfile(m_profileId) ? 0 : -1; }

} // namespace analyticsapi
