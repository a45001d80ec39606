#include "Service.h"

#include "Connection.h"
#include "Failure.h"

#include <xml/Text.h>

#include <algorithm>
#include <charconv>
#include <string_view>

namespace client
{
namespace
{

Behavior Taken(const VideoAnalytics__Behavior& wire, bool hidden)
{
    Behavior behavior;
    behavior.id = wire.type;
    behavior.name = wire.userName;
    behavior.state = static_cast<State>(wire.availability);
    behavior.advancedMode = wire.supportAdvanceMode;
    behavior.stillCamera = wire.fixedPosition;
    behavior.hidden = hidden;
    return behavior;
}

std::vector<Behavior> Taken(const _VideoAnalytics__GetBehaviorAvailabilityResponse& response)
{
    std::vector<Behavior> behaviors;
    if (response.behaviors == nullptr)
        return behaviors;
    for (const VideoAnalytics__Behavior* behavior : response.behaviors->behavior)
        behaviors.push_back(Taken(*behavior, false));
    for (const VideoAnalytics__Behavior* behavior : response.behaviors->hiddenBehavior)
        behaviors.push_back(Taken(*behavior, true));
    return behaviors;
}

// A name stands in a field with each byte that doesn't fit there as "%" and two hexadecimal digits.
std::string Unescaped(const std::string& text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at)
    {
        unsigned char byte = 0;
        const char* const end = text.data() + std::min(at + 3, text.size());
        const bool escaped = text[at] == '%' &&
                             std::from_chars(text.data() + at + 1, end, byte, 16).ptr == text.data() + at + 3;
        plain += escaped ? static_cast<char>(byte) : text[at];
        at += escaped ? 2 : 0;
    }
    return plain;
}

} // namespace

Service::Service(const Access& access, std::optional<Clock::time_point> deadline)
    : m_connection(std::make_unique<Connection>(access, deadline))
{
}

Service::~Service() = default;

void Service::Deadline(Clock::time_point deadline) { m_connection->Deadline(deadline); }

std::vector<Profile> Service::Profiles()
{
    _VideoAnalytics__GetProfileList request;
    std::vector<Profile> profiles;
    const auto& response = m_connection->Call(soap_call___VideoAnalytics__GetProfileList, request);
    if (response.profileList == nullptr)
        return profiles;
    for (const VideoAnalytics__ProfileSummary* profile : response.profileList->profile)
        profiles.push_back({profile->id, profile->__item, profile->preset == nullptr ? "" : *profile->preset,
                            profile->active != nullptr && *profile->active});
    return profiles;
}

std::optional<int> Service::ActiveProfile()
{
    _VideoAnalytics__GetActiveProfile request;
    const int id = m_connection->Call(soap_call___VideoAnalytics__GetActiveProfile, request).profileId;
    return id < 0 ? std::nullopt : std::optional(id);
}

void CheckCharacters(const std::string& name)
{
    if (!analytics::xml::IsXmlText(name))
        throw Failure(Exit::Usage, "The name '" + name +
                                       "' isn't UTF-8, or holds a character that XML does not allow. "
                                       "Give it another one");
}

void CheckProfileName(const std::string& name)
{
    if (name.empty())
        throw Failure(Exit::Usage, "The name is empty, and nobody could call the profile by it. Give it one");
    CheckCharacters(name);
}

int Service::CreateProfile(const std::string& name)
{
    CheckCharacters(name);
    _VideoAnalytics__CreateProfile request;
    request.name = name;
    return m_connection->Call(soap_call___VideoAnalytics__CreateProfile, request).profileId;
}

void Service::DeleteProfile(int profile)
{
    _VideoAnalytics__DeleteProfile request;
    request.profileId = profile;
    m_connection->Call(soap_call___VideoAnalytics__DeleteProfile, request);
}

void Service::RunProfile(int profile)
{
    _VideoAnalytics__ExecuteProfile request;
    request.id = profile;
    m_connection->Call(soap_call___VideoAnalytics__ExecuteProfile, request);
}

void Service::StopProfile(std::optional<int> profile)
{
    _VideoAnalytics__StopProfile request;
    request.profileId = profile.value_or(-1);
    m_connection->Call(soap_call___VideoAnalytics__StopProfile, request);
}

std::vector<Behavior> Service::Availability(std::optional<int> profile)
{
    _VideoAnalytics__GetBehaviorAvailability request;
    request.profileId = profile.value_or(-1);
    return Taken(m_connection->Call(soap_call___VideoAnalytics__GetBehaviorAvailability, request));
}

std::vector<Behavior> Service::Availability(const std::vector<std::string>& active)
{
    VideoAnalytics__BehaviorIdList list;
    list.behavior = active;
    _VideoAnalytics__GetBehaviorAvailability2 request;
    request.activeBehaviors = &list;
    return Taken(m_connection->Call(soap_call___VideoAnalytics__GetBehaviorAvailability2, request));
}

std::string Service::ProfileBehavior(int profile, const std::string& behavior)
{
    _VideoAnalytics__GetProfileBehavior request;
    request.profileId = profile;
    request.behaviorId = behavior;
    return m_connection->Call(soap_call___VideoAnalytics__GetProfileBehavior, request).config;
}

void Service::SetProfileBehavior(int profile, const std::string& behavior, const std::string& document)
{
    _VideoAnalytics__SetProfileBehavior request;
    request.profileId = profile;
    request.behaviorId = behavior;
    request.config = document;
    m_connection->Call(soap_call___VideoAnalytics__SetProfileBehavior, request);
}

void Service::DeleteProfileBehavior(int profile, const std::string& behavior)
{
    _VideoAnalytics__DeleteProfileBehavior request;
    request.profileId = profile;
    request.behaviorId = behavior;
    m_connection->Call(soap_call___VideoAnalytics__DeleteProfileBehavior, request);
}

std::string Service::DefaultBehavior(const std::string& behavior)
{
    _VideoAnalytics__GetDefaultConfiguration request;
    request.behaviorId = behavior;
    return m_connection->Call(soap_call___VideoAnalytics__GetDefaultConfiguration, request).config;
}

std::string Service::Scene(int profile)
{
    _VideoAnalytics__GetProfileScene request;
    request.profileId = profile;
    return m_connection->Call(soap_call___VideoAnalytics__GetProfileScene, request).scene;
}

void Service::SetScene(int profile, const std::string& document)
{
    _VideoAnalytics__SetProfileScene request;
    request.profileId = profile;
    request.scene = document;
    m_connection->Call(soap_call___VideoAnalytics__SetProfileScene, request);
}

std::string Service::DefaultScene()
{
    _VideoAnalytics__GetDefaultScene request;
    return m_connection->Call(soap_call___VideoAnalytics__GetDefaultScene, request).scene;
}

void Service::Control(Command command)
{
    _VideoAnalytics__AlgorithmControl request;
    request.command = static_cast<int>(command);
    m_connection->Call(soap_call___VideoAnalytics__AlgorithmControl, request);
}

Identity Service::Told() const
{
    constexpr std::string_view kRole = "; role=";
    const std::string caller = m_connection->Field("Varlo-Analytics-Caller");
    const std::size_t role = caller.find(kRole);
    Identity told{m_connection->Field("Varlo-Analytics-Version"), Unescaped(caller.substr(0, role)), ""};
    if (role != caller.npos)
        told.role = caller.substr(role + kRole.size());
    return told;
}

} // namespace client
