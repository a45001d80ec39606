#pragma once

#include <SoapRequest.h>

#include <string>

namespace analyticsapi
{

// Removes one behavior from a profile. An engine configuration that was stored with it stays.
class DeleteProfileBehaviorRequest : public SoapRequest
{
  public:
    // Keeps a reference to `behaviorId`: the message must outlive the request.
    DeleteProfileBehaviorRequest(int profileId, const std::string& behaviorId, soap* soap)
        : SoapRequest("DeleteProfileBehavior", soap), m_profileId(profileId), m_behaviorId(behaviorId)
    {
    }

  protected:
    int DoExecute() override;

  private:
    int m_profileId;
    const std::string& m_behaviorId;
};

} // namespace analyticsapi
