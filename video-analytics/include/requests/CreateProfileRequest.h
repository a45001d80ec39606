#pragma once

#include <SoapRequest.h>

#include <string>

namespace analyticsapi
{

// Creates an empty profile. The name is a reference: the message must outlive the request.
class CreateProfileRequest : public SoapRequest
{
  public:
    CreateProfileRequest(const std::string& name, soap* soap);

    // The new profile's identifier, -1 if there is none.
    int ProfileId() const { return m_profileId; }

  protected:
    int DoExecute() override;

  private:
    const std::string& m_name;
    int m_profileId;
};

} // namespace analyticsapi
