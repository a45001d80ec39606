#pragma once

#include <SoapRequest.h>

#include <analytics/ProfileSummary.h>

#include <vector>

namespace analyticsapi
{

using ProfileSummaries = std::vector<analytics::ProfileSummary>;

// Lists all profiles.
class GetProfileListRequest : public SoapRequest
{
  public:
    explicit GetProfileListRequest(soap* soap);

    // In the order that clients see.
    const ProfileSummaries& ProfileList() const { return m_profileList; }

  protected:
    int DoExecute() override;

  private:
    ProfileSummaries m_profileList;
};

} // namespace analyticsapi
