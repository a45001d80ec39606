#pragma once

#include <SoapRequest.h>

namespace analyticsapi
{

// Runs a profile. The identifier goes to the platform as the client sent it.
class ExecuteProfileRequest : public SoapRequest
{
  public:
    ExecuteProfileRequest(int profileId, soap* soap)
        : SoapRequest("ExecuteProfile", soap), m_profileId(profileId)
    {
    }

  protected:
    int DoExecute() override;

  private:
    const int m_profileId;
};

} // namespace analyticsapi
