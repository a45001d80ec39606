#pragma once

#include <SoapRequest.h>

namespace analyticsapi
{

// Stops a profile; -1 stops whichever is active.
class StopProfileRequest : public SoapRequest
{
  public:
    StopProfileRequest(int profileId, soap* soap) : SoapRequest("StopProfile", soap), m_profileId(profileId)
    {
    }

  protected:
    int DoExecute() override;

  private:
    int m_profileId;
};

} // namespace analyticsapi
