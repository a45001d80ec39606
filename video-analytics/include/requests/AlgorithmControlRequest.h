#pragma once

#include <SoapRequest.h>

namespace analyticsapi
{

// Sends a command to the analytics. What the number means is for the platform to say.
class AlgorithmControlRequest : public SoapRequest
{
  public:
    AlgorithmControlRequest(int command, soap* soap)
        : SoapRequest("AlgorithmControl", soap), m_command(command)
    {
    }

  protected:
    int DoExecute() override;

  private:
    int m_command;
};

} // namespace analyticsapi
