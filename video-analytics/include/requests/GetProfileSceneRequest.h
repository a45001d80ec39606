#pragma once

#include <SoapRequest.h>

#include <string>

namespace analyticsapi
{

// Gives the scene of a profile in the clients' form, with the profile's name and preset in it. Ends the
// connection if the profile has none.
class GetProfileSceneRequest : public SoapRequest
{
  public:
    GetProfileSceneRequest(int profileId, soap* soap)
        : SoapRequest("GetProfileScene", soap), m_profileId(profileId)
    {
    }

    // Empty until executed, and if what is stored can't be converted.
    const std::string& Scene() const { return m_scene; }

  protected:
    int DoExecute() override;

  private:
    int m_profileId;
    std::string m_scene;
};

} // namespace analyticsapi
