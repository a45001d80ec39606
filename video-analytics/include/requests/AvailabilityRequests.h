#pragma once

#include <SoapRequest.h>

#include <analytics/PluginManager.h>

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
    BehaviorAvailabilityRequest(const char* name, soap* soap) : SoapRequest(name, soap) {}

    // Fills the lists and returns 0. Each of `activeRules` is an Id() or an Alias(); one that no plug-in
    // answers to costs nothing but takes a selection. Throws what the platform throws.
    int GetAvailabilities(const std::vector<std::string>& activeRules);

  private:
    void RemoveFixedNoFixedBehaviors(AvailabilityList& availabilities, bool activeBehaviorsMoveCamera);

    AvailabilityList m_availabilities;
    AvailabilityList m_hiddenAvailabilities;
};

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
