#pragma once

#include <SoapRequest.h>

#include <string>

namespace analyticsapi
{

// Fetches the default document of a behavior, which its plug-in delivers in the clients' form.
class GetDefaultConfigurationRequest : public SoapRequest
{
  public:
    // Keeps a reference to `behaviorId`: the message must outlive the request.
    GetDefaultConfigurationRequest(const std::string& behaviorId, soap* soap)
        : SoapRequest("GetDefaultConfiguration", soap), m_behaviorId(behaviorId)
    {
    }

    // Empty if the plug-in has no default.
    const std::string& Config() const { return m_config; }

  protected:
    int DoExecute() override;

  private:
    const std::string& m_behaviorId;
    std::string m_config;
};

} // namespace analyticsapi
