#pragma once

#include <SoapRequest.h>

namespace analyticsapi
{

// Asks which profile runs.
class GetActiveProfileRequest : public SoapRequest
{
  public:
    explicit GetActiveProfileRequest(soap* soap);

    // -1 if no profile is active.
    int ActiveProfileId() const { return m_activeProfileId; }

  protected:
    int DoExecute() override;

  private:
    int m_activeProfileId;
};

} // namespace analyticsapi
