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

// A file or setting of the operator's can't be used. The text names the file and the line, and says what to
// do.
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
    bool insecure = false;     // everybody may use the endpoint
};

// The query for the endpoint with this name in the settings document, the first if there are several.
std::string EndpointQuery(const std::string& name);

// Those of the endpoint with this name in the settings document. A relative file name counts from the
// document's folder. Throws AnalyticsFault if the settings can't be read.
AccessSettings AccessInSettings(const std::string& endpoint);

// Whether others than this machine can reach a numeric address; false for anything else.
bool ReachedFromOutside(const std::string& address);

// Throws AccessFault, with what to do about it, if `access` contradicts itself or leaves open an
// `address` that can be reached from outside. What isn't an address isn't judged.
void CheckAccess(const AccessSettings& access, const std::string& address);

// The text of a file that the settings name, as it last stood. Throws AccessFault if it couldn't be read.
const std::string& TextOf(const analytics::platform::WatchedFile& file);

// Reports on standard error that a changed file is in force, or why it isn't and the former one stays. The
// same report appears at most once in 10 seconds. Any thread.
void SayTakenOver(const std::string& path);
void SayNotTakenOver(const AccessFault& fault);

// The unknown names and unusable values in the text of a settings document, a sentence each that begins with
// `path` and the line; or the one error of a text that is not well-formed.
std::vector<std::string> MistakesInSettings(const std::string& path, const std::string& text);

// The same for the files that the current settings name (certificates, revocation lists, users), and for an
// `address` to listen on that can be reached from outside without protection.
std::vector<std::string> MistakesInAccess(const std::string& address);

} // namespace tarno::osa
