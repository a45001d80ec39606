#pragma once

#include <BehaviorAvailabilityRequest.h>

namespace analyticsapi
{

// Availability beside a set of rules that the client names.
class GetBehaviorAvailability2Request : public BehaviorAvailabilityRequest
{
  public:
    // Keeps a reference: the list must outlive the request.
    GetBehaviorAvailability2Request(const std::vector<std::string>& activeBehaviors, soap* soap)
        : BehaviorAvailabilityRequest("GetBehaviorAvailability2", soap), m_activeBehaviors(activeBehaviors)
    {
    }

  protected:
    int DoExecute() override;

  private:
    const std::vector<std::string>& m_activeBehaviors;
};

} // namespace analyticsapi
