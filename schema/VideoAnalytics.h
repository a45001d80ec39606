// Input of gSOAP's soapcpp2: the data types, messages and operations of the VideoAnalytics service.
//
// This is not C++ for the compiler. The generator makes the serialisers, the dispatcher soap_serve(),
// the WSDL and the XSD of it, all in the build tree. The grammar is soapcpp2's: a trailing 0 or 1
// behind a field is its minimal occurrence, '@' marks an attribute, '__item' is an element's own
// text, and a name that begins with '_' is a top-level element.
//
// The names follow from the schema: VideoAnalytics__X for the type X, _VideoAnalytics__X for the
// top-level element X, X_ for the polymorphic wrapper of an enumeration, X__ for that of a
// restricted number.

//gsoap VideoAnalytics service name: VideoAnalytics
//gsoap VideoAnalytics service port: http://127.0.0.1:8080/
//gsoap VideoAnalytics service namespace: urn:schemas-varlo-com:service:VideoAnalytics:2
//gsoap VideoAnalytics service documentation: Analytic profiles of a camera: create, edit, run and stop them.
//gsoap VideoAnalytics service style: document
//gsoap VideoAnalytics service encoding: literal
//gsoap VideoAnalytics schema namespace: urn:schemas-varlo-com:service:VideoAnalytics:2
//gsoap VideoAnalytics schema form: unqualified

#import "stlvector.h"

// ---- The root of the type tree, and the built-in types that may stand in a field of its type ----

// Everything derived from here is written with its xsi:type. '__item' keeps the first element that
// a reader did not recognise, as literal text; it is not written back.
class xsd__anyType
{
  public:
    _XML __item;
    struct soap* soap;
};

typedef std::string xsd__anyURI;

class xsd__anyURI_ : public xsd__anyType
{
  public:
    xsd__anyURI __item;
};

class xsd__boolean : public xsd__anyType
{
  public:
    bool __item;
};

class xsd__int : public xsd__anyType
{
  public:
    int __item;
};

class xsd__string : public xsd__anyType
{
  public:
    std::string __item;
};

class xsd__unsignedInt : public xsd__anyType
{
  public:
    unsigned int __item;
};

// ---- Restricted numbers: the ranges are the clients' to keep, the reader tests none ----

typedef unsigned int VideoAnalytics__Coordinate;

class VideoAnalytics__Coordinate__ : public xsd__anyType
{
  public:
    VideoAnalytics__Coordinate __item;
};

typedef unsigned int VideoAnalytics__Normalized1To10;

class VideoAnalytics__Normalized1To10__ : public xsd__anyType
{
  public:
    VideoAnalytics__Normalized1To10 __item;
};

// ---- Enumerations: numbers on the wire, each with its wrapper ----

enum VideoAnalytics__AlarmState
{
    VideoAnalytics__AlarmState__0,
    VideoAnalytics__AlarmState__1,
};

class VideoAnalytics__AlarmState_ : public xsd__anyType
{
  public:
    enum VideoAnalytics__AlarmState __item;
};

enum VideoAnalytics__AlarmSeverity
{
    VideoAnalytics__AlarmSeverity__0,
    VideoAnalytics__AlarmSeverity__1,
    VideoAnalytics__AlarmSeverity__2,
    VideoAnalytics__AlarmSeverity__3,
};

class VideoAnalytics__AlarmSeverity_ : public xsd__anyType
{
  public:
    enum VideoAnalytics__AlarmSeverity __item;
};

enum VideoAnalytics__Direction
{
    VideoAnalytics__Direction__0,
    VideoAnalytics__Direction__1,
    VideoAnalytics__Direction__2,
    VideoAnalytics__Direction__3,
    VideoAnalytics__Direction__4,
    VideoAnalytics__Direction__5,
    VideoAnalytics__Direction__6,
    VideoAnalytics__Direction__7,
};

class VideoAnalytics__Direction_ : public xsd__anyType
{
  public:
    enum VideoAnalytics__Direction __item;
};

enum VideoAnalytics__AllDirection
{
    VideoAnalytics__AllDirection__0,
    VideoAnalytics__AllDirection__1,
    VideoAnalytics__AllDirection__2,
    VideoAnalytics__AllDirection__3,
    VideoAnalytics__AllDirection__4,
    VideoAnalytics__AllDirection__5,
    VideoAnalytics__AllDirection__6,
    VideoAnalytics__AllDirection__7,
    VideoAnalytics__AllDirection__8,
};

class VideoAnalytics__AllDirection_ : public xsd__anyType
{
  public:
    enum VideoAnalytics__AllDirection __item;
};

enum VideoAnalytics__DimensionDirection
{
    VideoAnalytics__DimensionDirection__0,
    VideoAnalytics__DimensionDirection__1,
    VideoAnalytics__DimensionDirection__2,
    VideoAnalytics__DimensionDirection__3,
};

class VideoAnalytics__DimensionDirection_ : public xsd__anyType
{
  public:
    enum VideoAnalytics__DimensionDirection __item;
};

enum VideoAnalytics__SceneType
{
    VideoAnalytics__SceneType__0,
    VideoAnalytics__SceneType__1,
    VideoAnalytics__SceneType__2,
};

class VideoAnalytics__SceneType_ : public xsd__anyType
{
  public:
    enum VideoAnalytics__SceneType __item;
};

enum VideoAnalytics__BackgroundType
{
    VideoAnalytics__BackgroundType__0,
    VideoAnalytics__BackgroundType__1,
};

class VideoAnalytics__BackgroundType_ : public xsd__anyType
{
  public:
    enum VideoAnalytics__BackgroundType __item;
};

enum VideoAnalytics__TuningLevel
{
    VideoAnalytics__TuningLevel__0,
    VideoAnalytics__TuningLevel__1,
    VideoAnalytics__TuningLevel__2,
};

class VideoAnalytics__TuningLevel_ : public xsd__anyType
{
  public:
    enum VideoAnalytics__TuningLevel __item;
};

// Unavailable, available, active: the numbers of analyticsapi::Availability.
enum VideoAnalytics__Availability
{
    VideoAnalytics__Availability__0,
    VideoAnalytics__Availability__1,
    VideoAnalytics__Availability__2,
};

class VideoAnalytics__Availability_ : public xsd__anyType
{
  public:
    enum VideoAnalytics__Availability __item;
};

// ---- Complex types of the operations ----

class VideoAnalytics__Behavior : public xsd__anyType
{
  public:
    std::string type 1;
    std::string userName 1;
    enum VideoAnalytics__Availability availability 1;
    bool supportAdvanceMode 0;
    bool fixedPosition 0;
    std::string* uiFile 0;
    std::string* presentationURL 0;
};

class VideoAnalytics__AvailabilityList : public xsd__anyType
{
  public:
    std::vector<VideoAnalytics__Behavior*> behavior 0;
    std::vector<VideoAnalytics__Behavior*> hiddenBehavior 0;
};

class VideoAnalytics__BehaviorIdList : public xsd__anyType
{
  public:
    std::vector<std::string> behavior 0;
};

// The element's text is the profile's name.
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

// ---- Complex types of the schema that no operation uses ----

class VideoAnalytics__Vertex : public xsd__anyType
{
  public:
    VideoAnalytics__Coordinate x 1;
    VideoAnalytics__Coordinate y 1;
};

class _VideoAnalytics__struct_1
{
  public:
    std::vector<VideoAnalytics__Vertex*> vertex 0;
};

class _VideoAnalytics__struct_2
{
  public:
    std::vector<VideoAnalytics__Vertex*> vertex 0;
};

class _VideoAnalytics__struct_3
{
  public:
    std::vector<VideoAnalytics__Vertex*> vertex 0;
};

class _VideoAnalytics__struct_4
{
  public:
    std::vector<VideoAnalytics__Vertex*> vertex 0;
};

class _VideoAnalytics__struct_5
{
  public:
    std::vector<VideoAnalytics__Vertex*> vertex 0;
};

class _VideoAnalytics__struct_6
{
  public:
    std::vector<VideoAnalytics__Vertex*> vertex 0;
};

class VideoAnalytics__ROI : public xsd__anyType
{
  public:
    int id 1;
    std::string name 1;
    bool enable 1;
    unsigned int dwellTime 1;
    bool include 1;
    _VideoAnalytics__struct_1* vertices 0;
};

// The other zone types repeat the fields of ROI; they stand outside the type tree.
class VideoAnalytics__AlarmDelayedROI
{
  public:
    int id 1;
    std::string name 1;
    bool enable 1;
    unsigned int dwellTime 1;
    bool include 1;
    _VideoAnalytics__struct_3* vertices 0;
    unsigned int alarmDelay 1;
};

class VideoAnalytics__DirectionalROI
{
  public:
    int id 1;
    std::string name 1;
    bool enable 1;
    unsigned int dwellTime 1;
    bool include 1;
    _VideoAnalytics__struct_4* vertices 0;
    enum VideoAnalytics__Direction direction 1;
};

class VideoAnalytics__AllDirectionalROI
{
  public:
    int id 1;
    std::string name 1;
    bool enable 1;
    unsigned int dwellTime 1;
    bool include 1;
    _VideoAnalytics__struct_5* vertices 0;
    enum VideoAnalytics__AllDirection direction 1;
};

class VideoAnalytics__SensitiveROI
{
  public:
    int id 1;
    std::string name 1;
    bool enable 1;
    unsigned int dwellTime 1;
    bool include 1;
    _VideoAnalytics__struct_6* vertices 0;
    enum VideoAnalytics__Direction direction 1;
    VideoAnalytics__Normalized1To10 zoneSensitivity 1;
};

class VideoAnalytics__CalibrationParameter : public xsd__anyType
{
  public:
    std::string name 1;
    enum VideoAnalytics__DimensionDirection resize 1;
    enum VideoAnalytics__DimensionDirection moveable 1;
    _VideoAnalytics__struct_2 vertices 1;
};

class VideoAnalytics__Parameter : public xsd__anyType
{
  public:
    std::string type 1;
    std::string name 1;
    std::string displayName 1;
    std::string* defaultValue 0;
    std::string* minValue 0;
    std::string* maxValue 0;
    std::string* values 0;
    std::string* description 0;
};

class VideoAnalytics__ParameterList : public xsd__anyType
{
  public:
    std::vector<VideoAnalytics__Parameter*> parameter 0;
};

class VideoAnalytics__BehaviorList : public xsd__anyType
{
  public:
    std::vector<VideoAnalytics__Behavior*> mode 0;
};

class VideoAnalytics__Profile : public xsd__anyType
{
  public:
    xsd__anyType* analyticConfig 1;
};

class VideoAnalytics__MetadataURL : public xsd__anyType
{
  public:
    xsd__anyURI __item;
    @std::string transmission 1;
};

class VideoAnalytics__MetadataURLs : public xsd__anyType
{
  public:
    std::vector<VideoAnalytics__MetadataURL*> metadataURL 0;
};

// ---- Messages: the top-level elements ----

class _VideoAnalytics__GetBehaviorAvailability
{
  public:
    int profileId 1;
    struct soap* soap;
};

class _VideoAnalytics__GetBehaviorAvailabilityResponse
{
  public:
    VideoAnalytics__AvailabilityList* behaviors 0;
    struct soap* soap;
};

class _VideoAnalytics__GetBehaviorAvailability2
{
  public:
    VideoAnalytics__BehaviorIdList* activeBehaviors 1;
    struct soap* soap;
};

class _VideoAnalytics__GetProfileBehavior
{
  public:
    int profileId 1;
    std::string behaviorId 1;
    struct soap* soap;
};

class _VideoAnalytics__GetProfileBehaviorResponse
{
  public:
    std::string config 1;
    struct soap* soap;
};

class _VideoAnalytics__ExecuteProfile
{
  public:
    int id 1;
    struct soap* soap;
};

class _VideoAnalytics__ExecuteProfileResponse
{
  public:
    struct soap* soap;
};

class _VideoAnalytics__GetActiveProfile
{
  public:
    struct soap* soap;
};

class _VideoAnalytics__GetActiveProfileResponse
{
  public:
    int profileId 1;
    struct soap* soap;
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

class _VideoAnalytics__StopProfile
{
  public:
    int profileId 0 = -1;
    struct soap* soap;
};

class _VideoAnalytics__StopProfileResponse
{
  public:
    struct soap* soap;
};

class _VideoAnalytics__AlgorithmControl
{
  public:
    int command 1;
    struct soap* soap;
};

class _VideoAnalytics__AlgorithmControlResponse
{
  public:
    struct soap* soap;
};

class _VideoAnalytics__DeleteProfileBehavior
{
  public:
    int profileId 1;
    std::string behaviorId 1;
    struct soap* soap;
};

class _VideoAnalytics__DeleteProfileBehaviorResponse
{
  public:
    struct soap* soap;
};

class _VideoAnalytics__GetDefaultConfiguration
{
  public:
    std::string behaviorId 1;
    struct soap* soap;
};

class _VideoAnalytics__GetDefaultConfigurationResponse
{
  public:
    std::string config 1;
    struct soap* soap;
};

class _VideoAnalytics__GetDefaultScene
{
  public:
    struct soap* soap;
};

class _VideoAnalytics__GetDefaultSceneResponse
{
  public:
    std::string scene 1;
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

class _VideoAnalytics__CreateProfile
{
  public:
    std::string name 1;
    struct soap* soap;
};

class _VideoAnalytics__CreateProfileResponse
{
  public:
    int profileId 1;
    struct soap* soap;
};

class _VideoAnalytics__DeleteProfile
{
  public:
    int profileId 1;
    struct soap* soap;
};

class _VideoAnalytics__DeleteProfileResponse
{
  public:
    struct soap* soap;
};

class _VideoAnalytics__GetProfileScene
{
  public:
    int profileId 1;
    struct soap* soap;
};

class _VideoAnalytics__GetProfileSceneResponse
{
  public:
    std::string scene 1;
    struct soap* soap;
};

class _VideoAnalytics__SetProfileScene
{
  public:
    int profileId 1;
    std::string scene 1;
    struct soap* soap;
};

class _VideoAnalytics__SetProfileSceneResponse
{
  public:
    struct soap* soap;
};

// What the WSDL and the XSD say of each type.

//gsoap VideoAnalytics schema type-documentation: Availability 0 not available: the behavior cannot be selected beside the active ones, 1 available, 2 active. GetBehaviorAvailability and GetBehaviorAvailability2 return it.
//gsoap VideoAnalytics schema type-documentation: Behavior One installed behavior, in the answer of GetBehaviorAvailability and GetBehaviorAvailability2.
//gsoap VideoAnalytics schema type-documentation: AvailabilityList The behaviors that users can configure, and the hidden ones, in the answer of GetBehaviorAvailability and GetBehaviorAvailability2.
//gsoap VideoAnalytics schema type-documentation: BehaviorIdList Behaviors by their URN, in the request GetBehaviorAvailability2.
//gsoap VideoAnalytics schema type-documentation: ProfileSummary One profile, its name as text, in the answer of GetProfileList.
//gsoap VideoAnalytics schema type-documentation: ProfileList All profiles, in the answer of GetProfileList.
//gsoap VideoAnalytics schema type-documentation: Coordinate No operation uses it.
//gsoap VideoAnalytics schema type-documentation: Normalized1To10 No operation uses it.
//gsoap VideoAnalytics schema type-documentation: AlarmState No operation uses it.
//gsoap VideoAnalytics schema type-documentation: AlarmSeverity No operation uses it.
//gsoap VideoAnalytics schema type-documentation: Direction No operation uses it.
//gsoap VideoAnalytics schema type-documentation: AllDirection No operation uses it.
//gsoap VideoAnalytics schema type-documentation: DimensionDirection No operation uses it.
//gsoap VideoAnalytics schema type-documentation: SceneType No operation uses it.
//gsoap VideoAnalytics schema type-documentation: BackgroundType No operation uses it.
//gsoap VideoAnalytics schema type-documentation: TuningLevel No operation uses it.
//gsoap VideoAnalytics schema type-documentation: Vertex No operation uses it.
//gsoap VideoAnalytics schema type-documentation: ROI No operation uses it.
//gsoap VideoAnalytics schema type-documentation: AlarmDelayedROI No operation uses it.
//gsoap VideoAnalytics schema type-documentation: DirectionalROI No operation uses it.
//gsoap VideoAnalytics schema type-documentation: AllDirectionalROI No operation uses it.
//gsoap VideoAnalytics schema type-documentation: SensitiveROI No operation uses it.
//gsoap VideoAnalytics schema type-documentation: CalibrationParameter No operation uses it.
//gsoap VideoAnalytics schema type-documentation: Parameter No operation uses it.
//gsoap VideoAnalytics schema type-documentation: ParameterList No operation uses it.
//gsoap VideoAnalytics schema type-documentation: BehaviorList No operation uses it.
//gsoap VideoAnalytics schema type-documentation: Profile No operation uses it.
//gsoap VideoAnalytics schema type-documentation: MetadataURL No operation uses it.
//gsoap VideoAnalytics schema type-documentation: MetadataURLs No operation uses it.
//gsoap VideoAnalytics schema type-documentation: _struct_1 No operation uses it.
//gsoap VideoAnalytics schema type-documentation: _struct_2 No operation uses it.
//gsoap VideoAnalytics schema type-documentation: _struct_3 No operation uses it.
//gsoap VideoAnalytics schema type-documentation: _struct_4 No operation uses it.
//gsoap VideoAnalytics schema type-documentation: _struct_5 No operation uses it.
//gsoap VideoAnalytics schema type-documentation: _struct_6 No operation uses it.

// ---- Operations, in the order in which the dispatcher compares ----

//gsoap VideoAnalytics service method-documentation: GetBehaviorAvailability Tells for every installed behavior whether it is active in the profile, can be selected beside the active ones, or cannot. A negative profileId asks for a camera with nothing active.
int __VideoAnalytics__GetBehaviorAvailability(_VideoAnalytics__GetBehaviorAvailability* VideoAnalytics__GetBehaviorAvailability, _VideoAnalytics__GetBehaviorAvailabilityResponse* VideoAnalytics__GetBehaviorAvailabilityResponse);

//gsoap VideoAnalytics service method-documentation: GetBehaviorAvailability2 The same for a set of active behaviors that the client names itself. Answered with a GetBehaviorAvailabilityResponse.
int __VideoAnalytics__GetBehaviorAvailability2(_VideoAnalytics__GetBehaviorAvailability2* VideoAnalytics__GetBehaviorAvailability2, _VideoAnalytics__GetBehaviorAvailabilityResponse* VideoAnalytics__GetBehaviorAvailabilityResponse);

//gsoap VideoAnalytics service method-documentation: GetProfileBehavior Returns the behavior document of one behavior of a profile, as text.
int __VideoAnalytics__GetProfileBehavior(_VideoAnalytics__GetProfileBehavior* VideoAnalytics__GetProfileBehavior, _VideoAnalytics__GetProfileBehaviorResponse* VideoAnalytics__GetProfileBehaviorResponse);

//gsoap VideoAnalytics service method-documentation: ExecuteProfile Runs the profile; it becomes the active one.
int __VideoAnalytics__ExecuteProfile(_VideoAnalytics__ExecuteProfile* VideoAnalytics__ExecuteProfile, _VideoAnalytics__ExecuteProfileResponse* VideoAnalytics__ExecuteProfileResponse);

//gsoap VideoAnalytics service method-documentation: GetActiveProfile Returns the identifier of the active profile, -1 if none runs.
int __VideoAnalytics__GetActiveProfile(_VideoAnalytics__GetActiveProfile* VideoAnalytics__GetActiveProfile, _VideoAnalytics__GetActiveProfileResponse* VideoAnalytics__GetActiveProfileResponse);

//gsoap VideoAnalytics service method-documentation: GetProfileList Lists all profiles in the order of their creation; profileList is left out when there are none.
int __VideoAnalytics__GetProfileList(_VideoAnalytics__GetProfileList* VideoAnalytics__GetProfileList, _VideoAnalytics__GetProfileListResponse* VideoAnalytics__GetProfileListResponse);

//gsoap VideoAnalytics service method-documentation: StopProfile Stops the profile; without profileId, or with -1, whichever is active.
int __VideoAnalytics__StopProfile(_VideoAnalytics__StopProfile* VideoAnalytics__StopProfile, _VideoAnalytics__StopProfileResponse* VideoAnalytics__StopProfileResponse);

//gsoap VideoAnalytics service method-documentation: AlgorithmControl 0 stops the analytics, 1 starts them, 2 switches the MD function off, 3 on.
int __VideoAnalytics__AlgorithmControl(_VideoAnalytics__AlgorithmControl* VideoAnalytics__AlgorithmControl, _VideoAnalytics__AlgorithmControlResponse* VideoAnalytics__AlgorithmControlResponse);

//gsoap VideoAnalytics service method-documentation: DeleteProfileBehavior Removes one behavior from a profile.
int __VideoAnalytics__DeleteProfileBehavior(_VideoAnalytics__DeleteProfileBehavior* VideoAnalytics__DeleteProfileBehavior, _VideoAnalytics__DeleteProfileBehaviorResponse* VideoAnalytics__DeleteProfileBehaviorResponse);

//gsoap VideoAnalytics service method-documentation: GetDefaultConfiguration Returns the default behavior document of a behavior, as text.
int __VideoAnalytics__GetDefaultConfiguration(_VideoAnalytics__GetDefaultConfiguration* VideoAnalytics__GetDefaultConfiguration, _VideoAnalytics__GetDefaultConfigurationResponse* VideoAnalytics__GetDefaultConfigurationResponse);

//gsoap VideoAnalytics service method-documentation: GetDefaultScene Returns the default scene document, as text.
int __VideoAnalytics__GetDefaultScene(_VideoAnalytics__GetDefaultScene* VideoAnalytics__GetDefaultScene, _VideoAnalytics__GetDefaultSceneResponse* VideoAnalytics__GetDefaultSceneResponse);

//gsoap VideoAnalytics service method-documentation: SetProfileBehavior Stores a behavior document in a profile.
int __VideoAnalytics__SetProfileBehavior(_VideoAnalytics__SetProfileBehavior* VideoAnalytics__SetProfileBehavior, _VideoAnalytics__SetProfileBehaviorResponse* VideoAnalytics__SetProfileBehaviorResponse);

//gsoap VideoAnalytics service method-documentation: CreateProfile Creates an empty profile and returns its identifier. A name has at most 255 bytes of UTF-8.
int __VideoAnalytics__CreateProfile(_VideoAnalytics__CreateProfile* VideoAnalytics__CreateProfile, _VideoAnalytics__CreateProfileResponse* VideoAnalytics__CreateProfileResponse);

//gsoap VideoAnalytics service method-documentation: DeleteProfile Deletes a profile; the active one is stopped first.
int __VideoAnalytics__DeleteProfile(_VideoAnalytics__DeleteProfile* VideoAnalytics__DeleteProfile, _VideoAnalytics__DeleteProfileResponse* VideoAnalytics__DeleteProfileResponse);

//gsoap VideoAnalytics service method-documentation: GetProfileScene Returns the scene document of a profile, as text. For a profile that has no scene yet no answer comes: the connection closes.
int __VideoAnalytics__GetProfileScene(_VideoAnalytics__GetProfileScene* VideoAnalytics__GetProfileScene, _VideoAnalytics__GetProfileSceneResponse* VideoAnalytics__GetProfileSceneResponse);

//gsoap VideoAnalytics service method-documentation: SetProfileScene Stores a scene document in a profile and takes over the profile name in it.
int __VideoAnalytics__SetProfileScene(_VideoAnalytics__SetProfileScene* VideoAnalytics__SetProfileScene, _VideoAnalytics__SetProfileSceneResponse* VideoAnalytics__SetProfileSceneResponse);
