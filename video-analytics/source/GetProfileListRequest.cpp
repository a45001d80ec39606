#include <GetProfileListRequest.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{

GetProfileListRequest::GetProfileListRequest(soap* soap) : SoapRequest("GetProfileList", soap) {}

int GetProfileListRequest::DoExecute() { return GetProfileManager()->GetProfileList(m_profileList) ? 0 : -1; }

} // namespace analyticsapi
