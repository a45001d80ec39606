#pragma once

#include <SoapRequest.h>

namespace analyticsapi
{

// Deletes a profile.
class DeleteProfileRequest : public SoapRequest
{
  public:
    DeleteProfileRequest(int profileId, soap* soap);
    ~DeleteProfileRequest() override;

  protected:
    int DoExecute() override;

  private:
    int m_profileId;
};

} // namespace analyticsapi
