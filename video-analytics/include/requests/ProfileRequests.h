#pragma once

#include <SoapRequest.h>

#include <analytics/ProfileManager.h>

#include <string>
#include <vector>

namespace analyticsapi
{

// Creates an empty profile. The name is a reference: the message must outlive the request.
class CreateProfileRequest : public SoapRequest
{
  public:
    CreateProfileRequest(const std::string& name, soap* soap);

    // The new profile's identifier, -1 if there is none.
    int ProfileId() const { return m_profileId; }

  protected:
    int DoExecute() override;

  private:
    const std::string& m_name;
    int m_profileId;
};

// Deletes a profile.
class DeleteProfileRequest : public SoapRequest
{
  public:
    DeleteProfileRequest(int profileId, soap* soap)
        : SoapRequest("DeleteProfile", soap), m_profileId(profileId)
    {
    }

  protected:
    int DoExecute() override;

  private:
    int m_profileId;
};

// Runs a profile. The identifier goes to the platform as the client sent it.
class ExecuteProfileRequest : public SoapRequest
{
  public:
    ExecuteProfileRequest(int profileId, soap* soap)
        : SoapRequest("ExecuteProfile", soap), m_profileId(profileId)
    {
    }

  protected:
    int DoExecute() override;

  private:
    const int m_profileId;
};

// Stops a profile; -1 stops whichever is active.
class StopProfileRequest : public SoapRequest
{
  public:
    StopProfileRequest(int profileId, soap* soap) : SoapRequest("StopProfile", soap), m_profileId(profileId)
    {
    }

  protected:
    int DoExecute() override;

  private:
    int m_profileId;
};

// Asks which profile runs.
class GetActiveProfileRequest : public SoapRequest
{
  public:
    explicit GetActiveProfileRequest(soap* soap);

    // -1 if no profile is active.
    int ActiveProfileId() const { return m_activeProfileId; }

  protected:
    int DoExecute() override;

  private:
    int m_activeProfileId;
};

using ProfileSummaries = std::vector<analytics::ProfileSummary>;

// Lists all profiles.
class GetProfileListRequest : public SoapRequest
{
  public:
    explicit GetProfileListRequest(soap* soap) : SoapRequest("GetProfileList", soap) {}

    // In the order that clients see.
    const ProfileSummaries& ProfileList() const { return m_profileList; }

  protected:
    int DoExecute() override;

  private:
    ProfileSummaries m_profileList;
};

// Sends a command to the analytics. What the number means is for the platform to say.
class AlgorithmControlRequest : public SoapRequest
{
  public:
    AlgorithmControlRequest(int command, soap* soap)
        : SoapRequest("AlgorithmControl", soap), m_command(command)
    {
    }

  protected:
    int DoExecute() override;

  private:
    int m_command;
};

} // namespace analyticsapi
