#pragma once

#include <SoapRequest.h>

#include <string>

namespace analyticsapi
{

// Stores a behavior document in a profile, converted, and what of it belongs to the behavior's analytics
// engine apart. Without a converter the document is stored as it came, not active.
class SetProfileBehaviorRequest : public SoapRequest
{
  public:
    // Keeps a reference to `behaviorId`: the message must outlive the request.
    SetProfileBehaviorRequest(int id, const std::string& behaviorId, const std::string& config, soap* soap)
        : SoapRequest("SetProfileBehavior", soap), m_id(id), m_behaviorId(behaviorId), m_config(config)
    {
    }

  protected:
    int DoExecute() override;

  private:
    const int m_id; // the profile
    const std::string& m_behaviorId;
    std::string m_config; // first the client's document, then the engine's
};

} // namespace analyticsapi
