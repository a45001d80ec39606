#include <ProfileRequests.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{
namespace
{
constexpr int kInvalidProfileId = -1;
} // namespace

GetActiveProfileRequest::GetActiveProfileRequest(soap* soap)
    : SoapRequest("GetActiveProfile", soap), m_activeProfileId(kInvalidProfileId)
{
}

int GetActiveProfileRequest::DoExecute()
{
    return GetProfileManager()->GetActiveProfile(m_activeProfileId) ? 0 : -1;
}

} // namespace analyticsapi
