#pragma once

#include <SoapRequest.h>

#include <string>

namespace analyticsapi
{

// Stores a scene that a client wrote and renames the profile to the name in it; the service has no other
// way to do that.
class SetProfileSceneRequest : public SoapRequest
{
  public:
    SetProfileSceneRequest(int profileId, const std::string& scene, soap* soap)
        : SoapRequest("SetProfileScene", soap), m_profileId(profileId), m_scene(scene)
    {
    }

  protected:
    int DoExecute() override;

  private:
    int m_profileId;
    std::string m_scene; // the client's document, then that of the engine
};

} // namespace analyticsapi
