#pragma once

#include <SoapRequest.h>

namespace analyticsapi
{

// Stops a profile; -1 stops whichever is active.
class StopProfileRequest : public SoapRequest
{
  public:
    StopProfileRequest(int profileId, soap* soap);
    ~StopProfileRequest() override;

  protected:
    int DoExecute() override;

  private:
    int m_profileId;
};

} // namespace analyticsapi
