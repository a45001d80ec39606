#include "console/Selectable.h"

#include "Reasons.h"
#include "Service.h"

namespace client
{
namespace
{

const char* Word(Unavailability::Reason reason)
{
    switch (reason)
    {
    case Unavailability::Reason::Camera:
        return "camera";
    case Unavailability::Reason::Number:
        return "number";
    case Unavailability::Reason::Budget:
        return "budget";
    }
    return "";
}

Json Described(Service& service, const std::vector<std::string>& active, const Behavior& behavior)
{
    Json described = {{"id", behavior.id},
                      {"name", behavior.name},
                      {"state", behavior.state == State::Active ? "active" : "available"}};
    if (behavior.state != State::Unavailable)
        return described;
    const std::optional<Unavailability> why = WhyUnavailable(service, active, behavior.id);
    described["state"] = why ? std::string("unavailable: ") + Word(why->reason) : "unavailable";
    described["why"] = why ? "It " + why->text + "." : "";
    return described;
}

} // namespace

Json AvailabilityOf(Service& service, int profile)
{
    const std::vector<Behavior> behaviors = service.Availability(profile);
    std::vector<std::string> active;
    for (const Behavior& behavior : behaviors)
        if (behavior.state == State::Active)
            active.push_back(behavior.id);
    Json list = Json::array();
    for (const Behavior& behavior : behaviors)
        if (!behavior.hidden)
            list.push_back(Described(service, active, behavior));
    list.push_back({{"id", "scene"}, {"name", "Scene"}, {"state", ""}});
    return list;
}

} // namespace client
