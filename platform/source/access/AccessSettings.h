#pragma once

#include <chrono>
#include <stdexcept>
#include <string>

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

} // namespace tarno::osa
