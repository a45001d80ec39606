#pragma once

#include "Access.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace client
{

struct Profile
{
    int id = 0;
    std::string name;
    std::string preset; // empty: none
    bool active = false;
};

enum class State
{
    Unavailable,
    Available,
    Active
};

struct Behavior
{
    std::string id; // the client identifier
    std::string name;
    State state = State::Unavailable;
    bool advancedMode = false;
    bool stillCamera = false;
    bool hidden = false; // users can't configure it
};

enum class Command
{
    Stop = 0,
    Start = 1,
    MotionDetectionOff = 2,
    MotionDetectionOn = 3
};

// What a service reports about itself and its caller. Empty where it reports nothing.
struct Identity
{
    std::string version;
    std::string name; // a user, or "CN=..." of a certificate
    std::string role;
};

// Throws Failure (usage) if the name isn't UTF-8, or holds what XML doesn't allow.
void CheckCharacters(const std::string& name);
// Throws Failure (usage) if a person can't give a profile this name: it is empty, or wouldn't be stored as it
// is.
void CheckProfileName(const std::string& name);

class Connection;

// The operations of one service, each one exchange. All throw Failure with a sentence for a person, and
// none takes longer than the access's timeout or, if there is one, the deadline. One thread at a time.
class Service
{
  public:
    using Clock = std::chrono::steady_clock;

    explicit Service(const Access& access, std::optional<Clock::time_point> deadline = std::nullopt);
    ~Service();
    // From now on the calls have to end by this moment.
    void Deadline(Clock::time_point deadline);

    std::vector<Profile> Profiles();
    std::optional<int> ActiveProfile();
    int CreateProfile(const std::string& name);
    void DeleteProfile(int profile);
    void RunProfile(int profile);
    // Without a profile: whichever runs.
    void StopProfile(std::optional<int> profile);

    // Without a profile: as if nothing were active. A profile that doesn't exist is taken for one of these.
    std::vector<Behavior> Availability(std::optional<int> profile);
    std::vector<Behavior> Availability(const std::vector<std::string>& active);

    // The document of an idle behavior may be empty.
    std::string ProfileBehavior(int profile, const std::string& behavior);
    void SetProfileBehavior(int profile, const std::string& behavior, const std::string& document);
    void DeleteProfileBehavior(int profile, const std::string& behavior);
    std::string DefaultBehavior(const std::string& behavior);

    // NoAnswer, if the profile has no scene or doesn't exist.
    std::string Scene(int profile);
    void SetScene(int profile, const std::string& document);
    std::string DefaultScene();

    void Control(Command command);

    // As the last answer has it.
    Identity Told() const;

  private:
    std::unique_ptr<Connection> m_connection;
};

} // namespace client
