#include <ProfileRequests.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{

int GetProfileListRequest::DoExecute() { return GetProfileManager()->GetProfileList(m_profileList) ? 0 : -1; }

} // namespace analyticsapi
