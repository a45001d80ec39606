// What the generated dispatcher calls: one function per operation, which translates a message to a
// request, runs it, and copies its result to the response. Lists and their elements are allocated in
// the connection's context, which frees them; no handler does.

#include <AvailabilityRequests.h>
#include <BehaviorRequests.h>
#include <ProfileRequests.h>
#include <SceneRequests.h>

#include <soapH.h>

#include <cassert>

namespace
{

// The generated caller never passes null; any other caller that does is stopped here, in every build.
template <class Request, class Response>
void CheckArguments(const soap* thesoap, const Request* request, const Response* response)
{
    assert(thesoap != __null);
    assert(request != __null);
    assert(response != __null);
}

VideoAnalytics__ProfileSummary* CreateProfileSummary(const analytics::ProfileSummary& profile, soap* thesoap)
{
    auto* const summary = soap_new_VideoAnalytics__ProfileSummary(thesoap, -1);
    summary->__item = profile.name;
    summary->id = profile.id;
    // Only what is true or not empty is written: a profile at rest has no `active` attribute.
    if (profile.active)
    {
        summary->active = static_cast<bool*>(soap_malloc(thesoap, sizeof(bool)));
        *summary->active = true;
    }
    if (!profile.preset.empty())
    {
        summary->preset = soap_new_std__string(thesoap, -1);
        *summary->preset = profile.preset;
    }
    return summary;
}

VideoAnalytics__Behavior* CreateBehavior(analyticsapi::AvailabilityList::const_iterator it, soap* thesoap)
{
    auto* const behavior = soap_new_VideoAnalytics__Behavior(thesoap, -1);
    behavior->type = it->first.Alias();
    behavior->userName = it->first.Name();
    behavior->availability = static_cast<VideoAnalytics__Availability>(it->second);
    behavior->supportAdvanceMode = it->first.SupportsAdvancedMode();
    behavior->fixedPosition = it->first.FixedCameraPosition();
    return behavior;
}

void AppendBehaviors(std::vector<VideoAnalytics__Behavior*>& behaviors,
                     const analyticsapi::AvailabilityList& availabilities, soap* thesoap)
{
    for (auto it = availabilities.cbegin(); it != availabilities.cend(); ++it)
        behaviors.push_back(CreateBehavior(it, thesoap));
}

// Runs the request and reports its behaviors. With nothing visible there is no list at all, and so no
// place for hidden ones.
int ReportAvailabilities(analyticsapi::BehaviorAvailabilityRequest& request, bool withHidden,
                         _VideoAnalytics__GetBehaviorAvailabilityResponse* response, soap* thesoap)
{
    const int rv = request.Execute();
    if (rv != 0)
        return rv;
    analyticsapi::AvailabilityList hiddenList;
    const analyticsapi::AvailabilityList& visibleList = request.BehaviorAvailabilities(hiddenList);
    if (visibleList.empty())
        return rv;
    response->behaviors = soap_new_VideoAnalytics__AvailabilityList(thesoap, -1);
    AppendBehaviors(response->behaviors->behavior, visibleList, thesoap);
    if (withHidden)
        AppendBehaviors(response->behaviors->hiddenBehavior, hiddenList, thesoap);
    return rv;
}

} // namespace

int __VideoAnalytics__ExecuteProfile(soap* thesoap, _VideoAnalytics__ExecuteProfile* request,
                                     _VideoAnalytics__ExecuteProfileResponse* response)
{
    CheckArguments(thesoap, request, response);
    return analyticsapi::ExecuteProfileRequest(request->id, thesoap).Execute();
}

int __VideoAnalytics__StopProfile(soap* thesoap, _VideoAnalytics__StopProfile* request,
                                  _VideoAnalytics__StopProfileResponse* response)
{
    CheckArguments(thesoap, request, response);
    return analyticsapi::StopProfileRequest(request->profileId, thesoap).Execute();
}

int __VideoAnalytics__AlgorithmControl(soap* thesoap, _VideoAnalytics__AlgorithmControl* request,
                                       _VideoAnalytics__AlgorithmControlResponse* response)
{
    CheckArguments(thesoap, request, response);
    return analyticsapi::AlgorithmControlRequest(request->command, thesoap).Execute();
}

int __VideoAnalytics__DeleteProfile(soap* thesoap, _VideoAnalytics__DeleteProfile* request,
                                    _VideoAnalytics__DeleteProfileResponse* response)
{
    CheckArguments(thesoap, request, response);
    return analyticsapi::DeleteProfileRequest(request->profileId, thesoap).Execute();
}

int __VideoAnalytics__CreateProfile(soap* thesoap, _VideoAnalytics__CreateProfile* request,
                                    _VideoAnalytics__CreateProfileResponse* response)
{
    CheckArguments(thesoap, request, response);
    analyticsapi::CreateProfileRequest cpRequest(request->name, thesoap);
    const int rv = cpRequest.Execute();
    if (rv == 0)
        response->profileId = cpRequest.ProfileId();
    return rv;
}

int __VideoAnalytics__GetActiveProfile(soap* thesoap, _VideoAnalytics__GetActiveProfile* request,
                                       _VideoAnalytics__GetActiveProfileResponse* response)
{
    CheckArguments(thesoap, request, response);
    analyticsapi::GetActiveProfileRequest gapRequest(thesoap);
    const int rv = gapRequest.Execute();
    response->profileId = gapRequest.ActiveProfileId();
    return rv;
}

int __VideoAnalytics__GetProfileList(soap* thesoap, _VideoAnalytics__GetProfileList* request,
                                     _VideoAnalytics__GetProfileListResponse* response)
{
    CheckArguments(thesoap, request, response);
    analyticsapi::GetProfileListRequest gplRequest(thesoap);
    const int rv = gplRequest.Execute();
    if (rv != 0 || gplRequest.ProfileList().empty())
        return rv;
    response->profileList = soap_new_VideoAnalytics__ProfileList(thesoap, -1);
    for (const analytics::ProfileSummary& profile : gplRequest.ProfileList())
        response->profileList->profile.push_back(CreateProfileSummary(profile, thesoap));
    return rv;
}

int __VideoAnalytics__GetBehaviorAvailability(soap* thesoap,
                                              _VideoAnalytics__GetBehaviorAvailability* request,
                                              _VideoAnalytics__GetBehaviorAvailabilityResponse* response)
{
    CheckArguments(thesoap, request, response);
    analyticsapi::GetBehaviorAvailabilityRequest gbaRequest(request->profileId, thesoap);
    return ReportAvailabilities(gbaRequest, true, response, thesoap);
}

int __VideoAnalytics__GetBehaviorAvailability2(soap* thesoap,
                                               _VideoAnalytics__GetBehaviorAvailability2* request,
                                               _VideoAnalytics__GetBehaviorAvailabilityResponse* response)
{
    CheckArguments(thesoap, request, response);
    std::vector<std::string> activeBehaviors;
    if (request->activeBehaviors != nullptr)
        activeBehaviors = request->activeBehaviors->behavior;
    analyticsapi::GetBehaviorAvailability2Request gba2Request(activeBehaviors, thesoap);
    // Unlike the other operation, this one never reports hidden behaviors.
    return ReportAvailabilities(gba2Request, false, response, thesoap);
}

int __VideoAnalytics__GetProfileBehavior(soap* thesoap, _VideoAnalytics__GetProfileBehavior* request,
                                         _VideoAnalytics__GetProfileBehaviorResponse* response)
{
    CheckArguments(thesoap, request, response);
    analyticsapi::GetProfileBehaviorRequest gpbRequest(request->profileId, request->behaviorId, thesoap);
    const int rv = gpbRequest.Execute();
    if (rv == 0)
        response->config = gpbRequest.ProfileBehavior();
    return rv;
}

int __VideoAnalytics__DeleteProfileBehavior(soap* thesoap, _VideoAnalytics__DeleteProfileBehavior* request,
                                            _VideoAnalytics__DeleteProfileBehaviorResponse* response)
{
    CheckArguments(thesoap, request, response);
    return analyticsapi::DeleteProfileBehaviorRequest(request->profileId, request->behaviorId, thesoap)
        .Execute();
}

int __VideoAnalytics__GetDefaultConfiguration(soap* thesoap,
                                              _VideoAnalytics__GetDefaultConfiguration* request,
                                              _VideoAnalytics__GetDefaultConfigurationResponse* response)
{
    CheckArguments(thesoap, request, response);
    analyticsapi::GetDefaultConfigurationRequest gdcRequest(request->behaviorId, thesoap);
    const int rv = gdcRequest.Execute();
    if (rv == 0 && !gdcRequest.Config().empty())
        response->config = gdcRequest.Config();
    return rv;
}

int __VideoAnalytics__GetDefaultScene(soap* thesoap, _VideoAnalytics__GetDefaultScene* request,
                                      _VideoAnalytics__GetDefaultSceneResponse* response)
{
    CheckArguments(thesoap, request, response);
    analyticsapi::GetDefaultSceneRequest gdsRequest(thesoap);
    const int rv = gdsRequest.Execute();
    if (rv == 0)
        response->scene = gdsRequest.Scene();
    return rv;
}

int __VideoAnalytics__SetProfileBehavior(soap* thesoap, _VideoAnalytics__SetProfileBehavior* request,
                                         _VideoAnalytics__SetProfileBehaviorResponse* response)
{
    CheckArguments(thesoap, request, response);
    // The one check that a handler makes: it comes before the identifier is looked at.
    if (request->config.empty())
        return soap_sender_fault(thesoap, "Invalid profile", nullptr);
    return analyticsapi::SetProfileBehaviorRequest(request->profileId, request->behaviorId, request->config,
                                                   thesoap)
        .Execute();
}

int __VideoAnalytics__GetProfileScene(soap* thesoap, _VideoAnalytics__GetProfileScene* request,
                                      _VideoAnalytics__GetProfileSceneResponse* response)
{
    CheckArguments(thesoap, request, response);
    analyticsapi::GetProfileSceneRequest gpsRequest(request->profileId, thesoap);
    const int rv = gpsRequest.Execute();
    if (rv == 0)
        response->scene = gpsRequest.Scene();
    return rv;
}

int __VideoAnalytics__SetProfileScene(soap* thesoap, _VideoAnalytics__SetProfileScene* request,
                                      _VideoAnalytics__SetProfileSceneResponse* response)
{
    CheckArguments(thesoap, request, response);
    return analyticsapi::SetProfileSceneRequest(request->profileId, request->scene, thesoap).Execute();
}
