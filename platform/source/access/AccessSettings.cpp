#include "access/AccessSettings.h"

#include "files/File.h"
#include "files/StandardError.h"
#include "settings/Configuration.h"

#include <analytics/Settings.h>

#include <arpa/inet.h>

#include <algorithm>

namespace tarno::osa
{
namespace
{

constexpr int kLongestSession = 604'800; // seconds; TLS 1.3 allows none beyond a week

std::string File(const std::string& key)
{
    const std::string file = analytics::Settings::GetValue(key);
    return file.empty() ? "" : analytics::platform::FileBesideSettings(file);
}

[[noreturn]] void Fail(const std::string& sentence)
{
    throw AccessFault(analytics::platform::CurrentConfiguration().settingsFile + ": " + sentence);
}

} // namespace

bool ReachedFromOutside(const std::string& address)
{
    in_addr four = {};
    if (inet_pton(AF_INET, address.c_str(), &four) == 1)
        return ntohl(four.s_addr) >> 24 != IN_LOOPBACKNET;
    in6_addr six = {};
    if (inet_pton(AF_INET6, address.substr(0, address.find('%')).c_str(), &six) != 1)
        return false;
    const bool mapped = IN6_IS_ADDR_V4MAPPED(&six) && six.s6_addr[12] == IN_LOOPBACKNET;
    return !IN6_IS_ADDR_LOOPBACK(&six) && !mapped;
}

AccessSettings AccessInSettings(const std::string& endpoint)
{
    const std::string element = "//server/endpoint[@name='" + endpoint + "']";
    AccessSettings access;
    access.certificate = File(element + "/@certificate");
    access.privateKey = File(element + "/@privateKey");
    access.clientCertificates = File(element + "/@clientCertificates");
    access.revoked = File(element + "/@revoked");
    access.users = File("//server/users");
    const int seconds = analytics::Settings::GetValue(element + "/@sessionSeconds",
                                                      static_cast<int>(access.sessionTime.count()));
    access.sessionTime = std::chrono::seconds(std::clamp(seconds, 0, kLongestSession));
    access.insecure = analytics::Settings::GetValue(element + "/@insecure") == "1";
    return access;
}

void CheckAccess(const AccessSettings& access, const std::string& address)
{
    if (access.certificate.empty() != access.privateKey.empty())
        Fail("the endpoint has only one of certificate and privateKey; name both files, or none of them");
    if (access.certificate.empty() && !access.clientCertificates.empty())
        Fail("the endpoint has clientCertificates but no TLS; name its certificate and privateKey as well");
    if (access.clientCertificates.empty() && !access.revoked.empty())
        Fail("the endpoint has revoked but no clientCertificates; name the authority whose certificates are "
             "revoked");
    if (!ReachedFromOutside(address))
        return;
    if (!access.users.empty() && access.certificate.empty())
        Fail("passwords would be sent to " + address +
             " unencrypted; name a certificate and privateKey at the endpoint, or listen on 127.0.0.1");
    if (access.users.empty() && access.clientCertificates.empty() && !access.insecure)
        Fail(address + " can be reached from outside, and everybody there could use the service; name a "
                       "certificate, a privateKey and either users or clientCertificates, or listen on "
                       "127.0.0.1, or set insecure=\"1\" at the endpoint if its network is guarded");
}

const std::string& TextOf(const analytics::platform::WatchedFile& file)
{
    if (!file.Last().failure.empty())
        throw AccessFault(
            file.Path() + ": it can't be read (" + file.Last().failure +
            "); make it readable for the service, with \"chgrp varlo-analytics FILE\" and \"chmod 640 "
            "FILE\" for one that others may not read, or name another in the settings document");
    return file.Last().text;
}

void SayTakenOver(const std::string& path)
{
    analytics::platform::SayOnce(path + ": what is in it now was taken over.");
}

void SayNotTakenOver(const AccessFault& fault)
{
    analytics::platform::SayOnce(std::string(fault.what()) + ". What was read before stays in force.");
}

} // namespace tarno::osa
