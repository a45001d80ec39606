#pragma once

#include <SoapRequest.h>

#include <string>

namespace analyticsapi
{

// Gives the scene that the scene analyzer's plug-in delivers for a start.
class GetDefaultSceneRequest : public SoapRequest
{
  public:
    explicit GetDefaultSceneRequest(soap* soap) : SoapRequest("GetDefaultScene", soap) {}

    // As the plug-in has it, less the XML declaration. Empty if it delivers none.
    const std::string& Scene() const { return m_scene; }

  protected:
    int DoExecute() override;

  private:
    std::string m_scene;
};

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
