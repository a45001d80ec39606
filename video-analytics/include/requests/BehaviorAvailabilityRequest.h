#pragma once

#include <SoapRequest.h>

#include <analytics/Manifest.h>

#include <string>
#include <utility>
#include <vector>

namespace analyticsapi
{

// The numbers are those of the wire.
enum Availability
{
    Unavailable = 0, // can't be selected now
    Available = 1,   // can be selected now
    Active = 2       // is among the active rules
};

using AvailabilityList = std::vector<std::pair<analytics::Manifest, Availability>>;

// Computes which rule plug-ins can still be selected beside a set of active rules. Every request asks
// the platform afresh; an object is used for one Execute().
class BehaviorAvailabilityRequest : public SoapRequest
{
  public:
    // After Execute() returned 0: the plug-ins that users can configure, and in `hidden` the others, both
    // in the platform's order.
    const AvailabilityList& BehaviorAvailabilities(AvailabilityList& hidden) const;

  protected:
    BehaviorAvailabilityRequest(const char* name, soap* soap);

    // Fills the lists and returns 0. Each of `activeRules` is an Id() or an Alias(); one that no plug-in
    // answers to costs nothing but takes a selection. Throws what the platform throws.
    int GetAvailabilities(const std::vector<std::string>& activeRules);

  private:
    void RemoveFixedNoFixedBehaviors(AvailabilityList& availabilities, bool activeBehaviorsMoveCamera);

    AvailabilityList m_availabilities;
    AvailabilityList m_hiddenAvailabilities;
};

} // namespace analyticsapi
