#include <ProfileRequests.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{
namespace
{
constexpr int kInvalidProfileId = -1;
} // namespace

CreateProfileRequest::CreateProfileRequest(const std::string& name, soap* soap)
    : SoapRequest("CreateProfile", soap), m_name(name), m_profileId(kInvalidProfileId)
{
}

int CreateProfileRequest::DoExecute()
{
    return GetProfileManager()->CreateProfile(m_profileId, m_name) ? 0 : -1;
}

} // namespace analyticsapi
