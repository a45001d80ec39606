#pragma once

#include <optional>
#include <string>
#include <vector>

namespace client
{

class Service;

// Why a behavior can't be active beside others.
struct Unavailability
{
    enum Reason
    {
        Camera, // some need a camera that stands still, others don't
        Number, // no more can be selected
        Budget  // together they cost more than the camera has
    };
    Reason reason;
    std::string text; // as in "can't be active beside loitering: ..."
};

// Asks the service about behavior `id` beside the active ones, all by their client identifiers; nothing if it
// can be active. Changes nothing. Throws Failure.
std::optional<Unavailability> WhyUnavailable(Service& service, const std::vector<std::string>& active,
                                             const std::string& id);
// The behaviors of the profile that are active.
std::vector<std::string> ActiveBehaviors(Service& service, int profile);

} // namespace client
