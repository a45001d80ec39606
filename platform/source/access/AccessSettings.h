#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

namespace analytics::platform
{
class WatchedFile;
}

namespace tarno::osa
{

// Something that the operator wrote down can't be used. Says which file, which line, and what to do.
class AccessFault : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

// Who may use an endpoint, and how. The files are empty if they are not named.
struct AccessSettings
{
    std::string certificate;
    std::string privateKey;
    std::string clientCertificates;
    std::string revoked;
    std::string users;
    std::chrono::seconds sessionTime =
        std::chrono::hours(1); // how long a TLS session can be resumed; 0: not at all
    bool insecure = false;     // nobody has to be kept out
};

// Those of the endpoint with this name in the settings document. A relative file name counts from the
// document's folder. Throws AnalyticsFault if the settings can't be read.
AccessSettings AccessInSettings(const std::string& endpoint);

// Whether others than this machine can reach a numeric address; false for one that is none.
bool ReachedFromOutside(const std::string& address);

// Throws AccessFault, with what to do about it, if `access` contradicts itself or leaves open an
// `address` that can be reached from outside. An address that is none is not judged.
void CheckAccess(const AccessSettings& access, const std::string& address);

// The text of a file that the settings name, as it last stood. Throws AccessFault if it couldn't be read.
const std::string& TextOf(const analytics::platform::WatchedFile& file);

// Says on standard error that a renewed file is in force, or, with the reason, that what was read before
// stays so. The same again is said once in 10 seconds. Any thread.
void SayTakenOver(const std::string& path);
void SayNotTakenOver(const AccessFault& fault);

// What in the text of a settings document isn't known, or can't be used as it stands, each as a sentence that
// begins with `path` and the line. Also the one mistake of a text that is not well-formed.
std::vector<std::string> MistakesInSettings(const std::string& path, const std::string& text);

// The same of the files that the settings in force name: certificates, revocation lists and users, and
// whether they leave open what can be reached from outside. `address` is where the service listens.
std::vector<std::string> MistakesInAccess(const std::string& address);

} // namespace tarno::osa
