#include "Reasons.h"

#include "Behaviors.h"
#include "Service.h"

#include <algorithm>

namespace client
{
namespace
{

// An identifier of no behavior: it counts as one of the selected behaviors, and costs nothing.
constexpr char kNobody[] = "urn:varlo-com:AlgorithmId:Nobody:1";

const Behavior* Find(const std::vector<Behavior>& behaviors, const std::string& id)
{
    const auto found =
        std::find_if(behaviors.begin(), behaviors.end(), [&id](const Behavior& one) { return one.id == id; });
    return found == behaviors.end() ? nullptr : &*found;
}

std::string Named(const std::vector<std::string>& ids)
{
    std::string names;
    for (const std::string& id : ids)
        names += (names.empty() ? "" : ", ") + BehaviorCalled(id);
    return names;
}

bool IsUnavailable(Service& service, const std::vector<std::string>& active, const std::string& id)
{
    const std::vector<Behavior> answer = service.Availability(active);
    const Behavior* const behavior = Find(answer, id);
    return behavior != nullptr && behavior->state == State::Unavailable;
}

// The active behaviors that need the other kind of camera.
std::vector<std::string> OfOtherKind(const std::vector<Behavior>& all, const std::vector<std::string>& active,
                                     const Behavior& behavior)
{
    std::vector<std::string> others;
    for (const std::string& id : active)
        if (const Behavior* const one = Find(all, id);
            one != nullptr && one->stillCamera != behavior.stillCamera)
            others.push_back(id);
    return others;
}

} // namespace

std::optional<Unavailability> WhyUnavailable(Service& service, const std::vector<std::string>& active,
                                             const std::string& id)
{
    const std::vector<Behavior> all = service.Availability(active);
    const Behavior* const behavior = Find(all, id);
    if (behavior == nullptr || behavior->state != State::Unavailable)
        return std::nullopt;
    if (active.empty())
        return Unavailability{Unavailability::Reason::Budget,
                              "can't be active: it costs more than the camera has, or none can be selected"};
    const std::string beside = "can't be active beside " + Named(active) + ": ";
    if (const std::vector<std::string> others = OfOtherKind(all, active, *behavior); !others.empty())
        return Unavailability{
            Unavailability::Reason::Camera,
            beside +
                (behavior->stillCamera
                     ? "it needs a camera that stands still, and " + Named(others) + " lets it move"
                     : "it lets the camera move, and " + Named(others) + " needs one that stands still")};
    // As many behaviors as are active, at no cost; one real one stays, since it decides the kind of camera.
    std::vector<std::string> places(active.size() - 1, kNobody);
    places.push_back(active.front());
    if (active.size() > 1
            ? IsUnavailable(service, places, id) && !IsUnavailable(service, {active.front()}, id)
            : IsUnavailable(service, {kNobody}, id) && behavior->stillCamera)
        return Unavailability{
            Unavailability::Reason::Number,
            beside + "no more than " + std::to_string(active.size()) +
                " can be selected (the motion detection, while it is on, takes a place as well); switch "
                "one of them off"};
    return Unavailability{Unavailability::Reason::Budget,
                          beside + "together they cost more than the camera has; switch one of them off"};
}

std::vector<Misfit> Misfits(Service& service, std::vector<std::string> active,
                            const std::vector<std::string>& added)
{
    std::vector<Misfit> misfits;
    for (const std::string& id : added)
        if (const auto why = WhyUnavailable(service, active, id))
            misfits.push_back({id, BehaviorCalled(id) + " " + why->text});
        else
            active.push_back(id);
    return misfits;
}

std::vector<std::string> ActiveBehaviors(Service& service, int profile)
{
    std::vector<std::string> active;
    for (const Behavior& behavior : service.Availability(profile))
        if (behavior.state == State::Active)
            active.push_back(behavior.id);
    return active;
}

} // namespace client
