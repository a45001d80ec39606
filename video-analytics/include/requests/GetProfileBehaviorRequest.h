#pragma once

#include <SoapRequest.h>

#include <string>

namespace analyticsapi
{

// Reads one behavior of a profile in the clients' form. Empty if the profile doesn't use the behavior, or
// if there is no converter for it.
class GetProfileBehaviorRequest : public SoapRequest
{
  public:
    GetProfileBehaviorRequest(int profileId, const std::string& behaviorId, soap* soap)
        : SoapRequest("GetProfileBehavior", soap), m_profileId(profileId), m_behaviorId(behaviorId)
    {
    }

    const std::string& ProfileBehavior() const { return m_profileBehavior; }

  protected:
    int DoExecute() override;

  private:
    int m_profileId;
    std::string m_behaviorId;
    std::string m_profileBehavior;
};

} // namespace analyticsapi
