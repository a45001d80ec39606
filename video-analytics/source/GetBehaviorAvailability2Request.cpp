#include <AvailabilityRequests.h>

namespace analyticsapi
{

int GetBehaviorAvailability2Request::DoExecute() { return GetAvailabilities(m_activeBehaviors); }

} // namespace analyticsapi
