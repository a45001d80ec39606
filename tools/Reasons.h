#pragma once

#include <optional>
#include <string>
#include <vector>

namespace client
{

class Service;

// Why a behavior can't be active together with others.
struct Unavailability
{
    enum class Reason
    {
        Camera, // some need a still camera, others don't
        Number, // no more can be selected
        Budget  // together they cost more than the camera has
    };
    Reason reason;
    std::string text; // as in "can't be active beside loitering: ..."
};

// Asks the service whether behavior `id` can be active together with the active ones, all by their client
// identifiers; nothing if it can. Changes nothing. Throws Failure.
std::optional<Unavailability> WhyUnavailable(Service& service, const std::vector<std::string>& active,
                                             const std::string& id);
// A behavior that can't be active together with the others, and why.
struct Misfit
{
    std::string id;
    std::string text; // a sentence without its full stop, as in "loitering can't be active beside ..."
};
// Adds one behavior after the other to the active ones, and leaves out those that can't be added. Asks the
// service once for each that can. Throws Failure.
std::vector<Misfit> Misfits(Service& service, std::vector<std::string> active,
                            const std::vector<std::string>& added);
// The behaviors of the profile that are active.
std::vector<std::string> ActiveBehaviors(Service& service, int profile);

} // namespace client
