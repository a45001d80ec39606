#pragma once

#include <chrono>
#include <string>

namespace tarno::osa
{

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

} // namespace tarno::osa
