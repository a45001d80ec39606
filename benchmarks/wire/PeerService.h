// Input of gSOAP's soapcpp2 for the plain peer: two operations of the VideoAnalytics service with the
// messages that our host has for them, so that both answer with the same bytes.

//gsoap VideoAnalytics service name: VideoAnalytics
//gsoap VideoAnalytics service port: http://127.0.0.1:8080/
//gsoap VideoAnalytics service namespace: urn:schemas-varlo-com:service:VideoAnalytics:2
//gsoap VideoAnalytics schema namespace: urn:schemas-varlo-com:service:VideoAnalytics:2
//gsoap VideoAnalytics schema form: unqualified

#import "stlvector.h"

class xsd__anyType
{
  public:
    _XML __item;
    struct soap* soap;
};

class VideoAnalytics__ProfileSummary : public xsd__anyType
{
  public:
    std::string __item;
    @int id 1;
    @bool* active 0;
    @std::string* preset 0;
};

class VideoAnalytics__ProfileList : public xsd__anyType
{
  public:
    std::vector<VideoAnalytics__ProfileSummary*> profile 0;
};

class _VideoAnalytics__GetProfileList
{
  public:
    struct soap* soap;
};

class _VideoAnalytics__GetProfileListResponse
{
  public:
    VideoAnalytics__ProfileList* profileList 0;
    struct soap* soap;
};

class _VideoAnalytics__SetProfileBehavior
{
  public:
    int profileId 1;
    std::string behaviorId 1;
    std::string config 1;
    struct soap* soap;
};

class _VideoAnalytics__SetProfileBehaviorResponse
{
  public:
    struct soap* soap;
};

//gsoap VideoAnalytics service method-style: GetProfileList document
//gsoap VideoAnalytics service method-encoding: GetProfileList literal
int __VideoAnalytics__GetProfileList(_VideoAnalytics__GetProfileList* VideoAnalytics__GetProfileList, _VideoAnalytics__GetProfileListResponse* VideoAnalytics__GetProfileListResponse);

//gsoap VideoAnalytics service method-style: SetProfileBehavior document
//gsoap VideoAnalytics service method-encoding: SetProfileBehavior literal
int __VideoAnalytics__SetProfileBehavior(_VideoAnalytics__SetProfileBehavior* VideoAnalytics__SetProfileBehavior, _VideoAnalytics__SetProfileBehaviorResponse* VideoAnalytics__SetProfileBehaviorResponse);
