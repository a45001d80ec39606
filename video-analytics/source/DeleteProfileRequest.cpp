#include <DeleteProfileRequest.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{

DeleteProfileRequest::DeleteProfileRequest(int profileId, soap* soap)
    : SoapRequest("DeleteProfile", soap), m_profileId(profileId)
{
}

DeleteProfileRequest::~DeleteProfileRequest() = default;

int DeleteProfileRequest::DoExecute() { return GetProfileManager()->DeleteProfile(m_profileId) ? 0 : -1; }

} // namespace analyticsapi
