#pragma once

#include <BehaviorAvailabilityRequest.h>

namespace analyticsapi
{

// Availability beside the active rules of a stored profile.
class GetBehaviorAvailabilityRequest : public BehaviorAvailabilityRequest
{
  public:
    // A negative identifier, or one that no profile has, stands for a profile with nothing active.
    GetBehaviorAvailabilityRequest(int profileId, soap* soap)
        : BehaviorAvailabilityRequest("GetBehaviorAvailability", soap), m_profileId(profileId)
    {
    }

  protected:
    int DoExecute() override;

  private:
    int m_profileId;
};

} // namespace analyticsapi
