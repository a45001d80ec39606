#pragma once

#include <string>

struct soap;

namespace varloapi
{

// The two names of a plug-in: the URN that clients use, and the reverse-domain identifier towards the
// platform and the converters. Both operations take either and ask the platform each time; an empty
// result says that no plug-in has the name.
class AnalyticsId
{
  public:
    static std::string AnalyticsIdFromVarloId(const std::string& varloId);
    static std::string VarloIdFromAnalyticsId(const std::string& analyticsId);
    // The engine of the scene, which has no name towards clients.
    static std::string SceneAnalyzerId();

  private:
    AnalyticsId();
    ~AnalyticsId();
};

} // namespace varloapi

namespace analyticsapi
{

// The sender's fault for a behavior that no plug-in has, or that the profile has nothing of. Returns
// gSOAP's status for a fault.
int UnsupportedBehavior(soap* soap);

} // namespace analyticsapi
