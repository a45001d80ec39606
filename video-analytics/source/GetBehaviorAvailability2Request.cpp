#include <GetBehaviorAvailability2Request.h>

namespace analyticsapi
{

GetBehaviorAvailability2Request::GetBehaviorAvailability2Request(
    const std::vector<std::string>& activeBehaviors, soap* soap)
    : BehaviorAvailabilityRequest("GetBehaviorAvailability2", soap), m_activeBehaviors(activeBehaviors)
{
}

GetBehaviorAvailability2Request::~GetBehaviorAvailability2Request() = default;

int GetBehaviorAvailability2Request::DoExecute() { return GetAvailabilities(m_activeBehaviors); }

} // namespace analyticsapi
