#include "access/AccessSettings.h"

#include "access/TlsSource.h"
#include "access/Users.h"
#include "files/File.h"
#include "files/StandardError.h"
#include "settings/Configuration.h"
#include "settings/Mistakes.h"
#include "xml/Reader.h"

#include <analytics/Settings.h>

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <utility>

namespace tarno::osa
{
namespace
{

using analytics::platform::Known;
using analytics::platform::Takes;

constexpr char kEndpoint[] = "kestrile-server";
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

constexpr std::array kKnown = {
    Known{"settings"},
    Known{"settings/backlog", Takes::Number, 1, 65535}, // of which the listening socket is told 16 bits
    Known{"settings/maxResource", Takes::Number, 0, std::numeric_limits<std::uint32_t>::max()},
    Known{"settings/maxSelectableRules", Takes::Several},
    Known{"settings/maxSelectableRules/numberOfCount", Takes::Number},
    Known{"settings/maxSelectableRules/countOnlyConfigurable", Takes::Number, 0, 1},
    Known{"settings/nonUserConfigurableRules", Takes::Several},
    Known{"settings/nonUserConfigurableRules/id", Takes::Several},
    Known{"settings/limits", Takes::Several},
    Known{"settings/limits/documentElements", Takes::Number, 1},
    Known{"settings/limits/profileBytes", Takes::Number, 1},
    Known{"settings/engine"},
    Known{"settings/server", Takes::Several},
    Known{"settings/server/endpoint"},
    Known{"settings/server/endpoint@name"},
    Known{"settings/server/endpoint@address", Takes::Address},
    Known{"settings/server/endpoint@port", Takes::Number, 0, 65535},
    Known{"settings/server/endpoint@certificate"},
    Known{"settings/server/endpoint@privateKey"},
    Known{"settings/server/endpoint@clientCertificates"},
    Known{"settings/server/endpoint@revoked"},
    Known{"settings/server/endpoint@sessionSeconds", Takes::Number, 0, kLongestSession},
    Known{"settings/server/endpoint@insecure", Takes::Number, 0, 1},
    Known{"settings/server/users"},
    Known{"settings/server/roles", Takes::Several},
    Known{"settings/server/roles/administrator", Takes::Several},
    Known{"settings/server/roles/operator", Takes::Several},
    Known{"settings/server/roles/viewer", Takes::Several},
    Known{"settings/server/audit"},
    Known{"settings/server/metrics"},
    Known{"settings/server/metrics@address", Takes::Address},
    Known{"settings/server/metrics@port", Takes::Number, 0, 65535},
    Known{"settings/server/metrics@insecure", Takes::Number, 0, 1},
    Known{"settings/server/workers", Takes::Number, 1},
    Known{"settings/server/maxConnections", Takes::Number, 1},
    Known{"settings/server/maxRequestBytes", Takes::Number, 1},
    Known{"settings/server/requestSeconds", Takes::Number, 1},
};

// Those whose name nothing asks for, where none has the one that counts.
std::vector<std::string> MistakesInEndpoints(const std::string& path, const std::string& text,
                                             const pugi::xml_document& tree)
{
    std::vector<std::string> mistakes;
    const analytics::xml::Lines lines(text);
    for (const pugi::xpath_node& found : tree.select_nodes("/settings/server/endpoint"))
        if (!found.parent().find_child_by_attribute("endpoint", "name", kEndpoint))
            mistakes.push_back(path + ':' + std::to_string(lines.Of(found.node())) +
                               ": <endpoint> is named \"" + found.node().attribute("name").value() +
                               "\" and not used; the name of the service's is " + kEndpoint);
    return mistakes;
}

// Adds why `use` fails, if it does.
template <class Use>
void Try(std::vector<std::string>& mistakes, Use use)
{
    try
    {
        use();
    }
    catch (const AccessFault& fault)
    {
        mistakes.emplace_back(fault.what());
    }
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

std::string EndpointQuery(const std::string& name) { return "(//server/endpoint[@name='" + name + "'])[1]"; }

AccessSettings AccessInSettings(const std::string& endpoint)
{
    const std::string element = EndpointQuery(endpoint);
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

std::vector<std::string> MistakesInSettings(const std::string& path, const std::string& text)
{
    pugi::xml_document tree;
    analytics::xml::SyntaxError error;
    if (!analytics::xml::Read(text, tree, error, analytics::xml::Doctype::NamesFile))
        return {path + ':' + std::to_string(error.line) + ": " + error.reason};
    auto mistakes = analytics::platform::MistakesIn(path, text, tree.document_element(), kKnown);
    for (std::string& mistake : MistakesInEndpoints(path, text, tree))
        mistakes.push_back(std::move(mistake));
    return mistakes;
}

std::vector<std::string> MistakesInAccess(const std::string& address)
{
    std::vector<std::string> mistakes;
    const AccessSettings access = AccessInSettings(kEndpoint);
    Try(mistakes, [&] { CheckAccess(access, address); });
    if (!access.certificate.empty() && !access.privateKey.empty())
        Try(mistakes, [&] { TlsSource source(access); });
    if (access.users.empty())
        return mistakes;
    Try(mistakes,
        [&]
        {
            analytics::platform::WatchedFile file(access.users);
            file.Renew();
            const Users users(access.users, TextOf(file));
            mistakes.insert(mistakes.end(), users.Mistakes().begin(), users.Mistakes().end());
            if (users.Mistakes().empty() && !users.WhyNobody().empty())
                throw AccessFault(users.WhyNobody());
        });
    return mistakes;
}

} // namespace tarno::osa
