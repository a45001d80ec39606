#pragma once

#include <SoapRequest.h>

#include <string>

namespace analyticsapi
{

// Gives the scene that the scene analyzer's plug-in delivers for a start.
class GetDefaultSceneRequest : public SoapRequest
{
  public:
    explicit GetDefaultSceneRequest(soap* soap);

    // As the plug-in has it, less the XML declaration. Empty if it delivers none.
    const std::string& Scene() const { return m_scene; }

  protected:
    int DoExecute() override;

  private:
    std::string m_scene;
};

} // namespace analyticsapi
