#pragma once

#include <SoapRequest.h>

namespace analyticsapi
{

// Deletes a profile.
class DeleteProfileRequest : public SoapRequest
{
  public:
    DeleteProfileRequest(int profileId, soap* soap)
        : SoapRequest("DeleteProfile", soap), m_profileId(profileId)
    {
    }

  protected:
    int DoExecute() override;

  private:
    int m_profileId;
};

} // namespace analyticsapi
