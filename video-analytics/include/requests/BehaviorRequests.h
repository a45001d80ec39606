#pragma once

#include <SoapRequest.h>

#include <string>

namespace analyticsapi
{

// Fetches the default document of a behavior, which its plug-in delivers in the clients' form.
class GetDefaultConfigurationRequest : public SoapRequest
{
  public:
    // Keeps a reference to `behaviorId`: the message must outlive the request.
    GetDefaultConfigurationRequest(const std::string& behaviorId, soap* soap)
        : SoapRequest("GetDefaultConfiguration", soap), m_behaviorId(behaviorId)
    {
    }

    // Empty if the plug-in has no default.
    const std::string& Config() const { return m_config; }

  protected:
    int DoExecute() override;

  private:
    const std::string& m_behaviorId;
    std::string m_config;
};

// Reads one behavior of a profile in the clients' form. Empty if the profile doesn't use the behavior, or
// if there is no converter for it.
class GetProfileBehaviorRequest : public SoapRequest
{
  public:
    GetProfileBehaviorRequest(int profileId, const std::string& behaviorId, soap* soap)
        : SoapRequest("GetProfileBehavior", soap), m_profileId(profileId), m_behaviorId(behaviorId)
    {
    }

    const std::string& ProfileBehavior() const { return m_profileBehavior; }

  protected:
    int DoExecute() override;

  private:
    int m_profileId;
    std::string m_behaviorId;
    std::string m_profileBehavior;
};

// Stores a behavior document in a profile, converted, and what of it belongs to the behavior's analytics
// engine apart. Without a converter the document is stored as it came, not active.
class SetProfileBehaviorRequest : public SoapRequest
{
  public:
    // Keeps a reference to `behaviorId`: the message must outlive the request.
    SetProfileBehaviorRequest(int id, const std::string& behaviorId, const std::string& config, soap* soap)
        : SoapRequest("SetProfileBehavior", soap), m_id(id), m_behaviorId(behaviorId), m_config(config)
    {
    }

  protected:
    int DoExecute() override;

  private:
    const int m_id; // the profile
    const std::string& m_behaviorId;
    std::string m_config; // first the client's document, then the engine's
};

// Removes one behavior from a profile. An engine configuration that was stored with it stays.
class DeleteProfileBehaviorRequest : public SoapRequest
{
  public:
    // Keeps a reference to `behaviorId`: the message must outlive the request.
    DeleteProfileBehaviorRequest(int profileId, const std::string& behaviorId, soap* soap)
        : SoapRequest("DeleteProfileBehavior", soap), m_profileId(profileId), m_behaviorId(behaviorId)
    {
    }

  protected:
    int DoExecute() override;

  private:
    int m_profileId;
    const std::string& m_behaviorId;
};

} // namespace analyticsapi
