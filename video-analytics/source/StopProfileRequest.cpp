#include <StopProfileRequest.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{

StopProfileRequest::StopProfileRequest(int profileId, soap* soap)
    : SoapRequest("StopProfile", soap), m_profileId(profileId)
{
}

StopProfileRequest::~StopProfileRequest() = default;

int StopProfileRequest::DoExecute() { return GetProfileManager()->StopProfile(m_profileId) ? 0 : -1; }

} // namespace analyticsapi
