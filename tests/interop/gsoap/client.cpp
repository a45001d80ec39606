// client WSDL URL VERSION: calls what standard input asks for, a line each, and prints each answer.
// The proxy is what wsdl2h and soapcpp2 make of the WSDL.
#include "VideoAnalytics.nsmap"
#include "soapVideoAnalyticsProxy.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <iostream>
#include <map>
#include <string>

using Json = nlohmann::json;
using Proxy = VideoAnalyticsProxy;
using Operation = std::function<int(Proxy&, const Json&, Json&)>;
template <class Request, class Response>
using Method = int (Proxy::*)(Request*, Response&);

namespace
{

// Fills what fields the request has.
template <class Request>
void Fill(Request& request, const Json& values, soap* context)
{
    if constexpr (requires { request.activeBehaviors; })
    {
        request.activeBehaviors = soap_new_ns1__BehaviorIdList(context);
        request.activeBehaviors->behavior = values["activeBehaviors"]["behavior"];
    }
    if constexpr (requires { *request.profileId; })
    {
        if (values.contains("profileId"))
            request.profileId = soap_new_int(context), *request.profileId = values["profileId"];
    }
    else if constexpr (requires { request.profileId; })
        request.profileId = values["profileId"];
    if constexpr (requires { request.id; })
        request.id = values["id"];
    if constexpr (requires { request.command; })
        request.command = values["command"];
    if constexpr (requires { request.name; })
        request.name = values["name"];
    if constexpr (requires { request.behaviorId; })
        request.behaviorId = values["behaviorId"];
    if constexpr (requires { request.config; })
        request.config = values["config"];
    if constexpr (requires { request.scene; })
        request.scene = values["scene"];
}

template <class Response>
Json Plain(const Response& response)
{
    Json values = Json::object();
    if constexpr (requires { response.profileId; })
        values["profileId"] = response.profileId;
    if constexpr (requires { response.config; })
        values["config"] = response.config;
    if constexpr (requires { response.scene; })
        values["scene"] = response.scene;
    if constexpr (requires { response.profileList; })
    {
        values["profiles"] = Json::array();
        if (response.profileList != nullptr)
            for (const auto* p : response.profileList->profile)
                values["profiles"].push_back(
                    {{"id", p->id}, {"name", p->__item}, {"active", p->active != nullptr && *p->active}});
    }
    if constexpr (requires { response.behaviors; })
        for (const auto* b : response.behaviors->behavior)
            values["behaviors"].push_back(
                {{"type", b->type}, {"availability", static_cast<int>(b->availability)}});
    return values;
}

template <class Request, class Response>
Operation Make(Method<Request, Response> method)
{
    return [method](Proxy& proxy, const Json& values, Json& result)
    {
        Request request;
        Response response;
        request.soap_default(proxy.soap);
        Fill(request, values, proxy.soap);
        const int status = (proxy.*method)(&request, response);
        if (status == SOAP_OK)
            result = Plain(response);
        return status;
    };
}

const std::map<std::string, Operation> kOperations = {
    {"GetBehaviorAvailability", Make<ns1__GetBehaviorAvailability, ns1__GetBehaviorAvailabilityResponse>(
                                    &Proxy::GetBehaviorAvailability)},
    {"GetBehaviorAvailability2", Make<ns1__GetBehaviorAvailability2, ns1__GetBehaviorAvailabilityResponse>(
                                     &Proxy::GetBehaviorAvailability2)},
    {"GetProfileBehavior",
     Make<ns1__GetProfileBehavior, ns1__GetProfileBehaviorResponse>(&Proxy::GetProfileBehavior)},
    {"ExecuteProfile", Make<ns1__ExecuteProfile, ns1__ExecuteProfileResponse>(&Proxy::ExecuteProfile)},
    {"GetActiveProfile",
     Make<ns1__GetActiveProfile, ns1__GetActiveProfileResponse>(&Proxy::GetActiveProfile)},
    {"GetProfileList", Make<ns1__GetProfileList, ns1__GetProfileListResponse>(&Proxy::GetProfileList)},
    {"StopProfile", Make<ns1__StopProfile, ns1__StopProfileResponse>(&Proxy::StopProfile)},
    {"AlgorithmControl",
     Make<ns1__AlgorithmControl, ns1__AlgorithmControlResponse>(&Proxy::AlgorithmControl)},
    {"DeleteProfileBehavior",
     Make<ns1__DeleteProfileBehavior, ns1__DeleteProfileBehaviorResponse>(&Proxy::DeleteProfileBehavior)},
    {"GetDefaultConfiguration", Make<ns1__GetDefaultConfiguration, ns1__GetDefaultConfigurationResponse>(
                                    &Proxy::GetDefaultConfiguration)},
    {"GetDefaultScene", Make<ns1__GetDefaultScene, ns1__GetDefaultSceneResponse>(&Proxy::GetDefaultScene)},
    {"SetProfileBehavior",
     Make<ns1__SetProfileBehavior, ns1__SetProfileBehaviorResponse>(&Proxy::SetProfileBehavior)},
    {"CreateProfile", Make<ns1__CreateProfile, ns1__CreateProfileResponse>(&Proxy::CreateProfile)},
    {"DeleteProfile", Make<ns1__DeleteProfile, ns1__DeleteProfileResponse>(&Proxy::DeleteProfile)},
    {"GetProfileScene", Make<ns1__GetProfileScene, ns1__GetProfileSceneResponse>(&Proxy::GetProfileScene)},
    {"SetProfileScene", Make<ns1__SetProfileScene, ns1__SetProfileSceneResponse>(&Proxy::SetProfileScene)},
};

Json Call(Proxy& proxy, const std::string& operation, const Json& values)
{
    Json result;
    if (kOperations.at(operation)(proxy, values, result) == SOAP_OK)
        return {{"result", result}};
    soap_set_fault(proxy.soap);
    return {{"code", *soap_faultcode(proxy.soap)}, {"fault", *soap_faultstring(proxy.soap)}};
}

} // namespace

int main(int, char** arguments)
{
    Proxy proxy(SOAP_C_UTFSTRING);
    proxy.soap_endpoint = arguments[2];
    proxy.soap->recv_timeout = 60;
    if (std::string(arguments[3]) == "1.1")
    {
        // The proxy speaks SOAP 1.2 unless told otherwise.
        namespaces[0].ns = namespaces[0].in;
        namespaces[1].ns = namespaces[1].in;
    }
    soap_set_namespaces(proxy.soap, namespaces);
    for (std::string line; std::getline(std::cin, line); proxy.destroy())
    {
        const Json call = Json::parse(line);
        std::cout << Call(proxy, call[0], call[1]) << std::endl;
    }
}
