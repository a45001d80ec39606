#include <ProfileRequests.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{

int AlgorithmControlRequest::DoExecute() { return GetProfileManager()->AlgorithmControl(m_command) ? 0 : -1; }

} // namespace analyticsapi
