#include <AlgorithmControlRequest.h>

#include <analytics/ProfileManager.h>

namespace analyticsapi
{

AlgorithmControlRequest::AlgorithmControlRequest(int command, soap* soap)
    : SoapRequest("AlgorithmControl", soap), m_command(command)
{
}

AlgorithmControlRequest::~AlgorithmControlRequest() = default;

int AlgorithmControlRequest::DoExecute() { return GetProfileManager()->AlgorithmControl(m_command) ? 0 : -1; }

} // namespace analyticsapi
