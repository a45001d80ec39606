#include <ExecuteProfileRequest.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{

ExecuteProfileRequest::ExecuteProfileRequest(int profileId, soap* soap)
    : SoapRequest("ExecuteProfile", soap), m_profileId(profileId)
{
}

ExecuteProfileRequest::~ExecuteProfileRequest() = default;

int ExecuteProfileRequest::DoExecute() { return GetProfileManager()->ExecuteProfile(m_profileId) ? 0 : -1; }

} // namespace analyticsapi
