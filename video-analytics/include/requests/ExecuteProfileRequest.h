#pragma once

#include <SoapRequest.h>

namespace analyticsapi
{

// Runs a profile. The identifier goes to the platform as the client sent it.
class ExecuteProfileRequest : public SoapRequest
{
  public:
    ExecuteProfileRequest(int profileId, soap* soap);
    ~ExecuteProfileRequest() override;

  protected:
    int DoExecute() override;

  private:
    const int m_profileId;
};

} // namespace analyticsapi
