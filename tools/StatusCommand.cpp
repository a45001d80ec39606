#include "Failure.h"
#include "Session.h"

#include <CLI/CLI.hpp>

#include <openssl/pem.h>
#include <openssl/x509.h>

#include <memory>

namespace client
{
namespace
{

// No profile ever has this number, so that what is asked of it changes nothing.
constexpr int kNoProfile = -2;

// Whether the service refuses for the role's sake.
template <class Operation>
bool IsRefused(const Operation& operation, const std::string& words)
{
    try
    {
        operation();
    }
    catch (const Failure& failure)
    {
        if (failure.Code() != Exit::Refused)
            throw;
        return std::string(failure.what()).find(words) != std::string::npos;
    }
    return false;
}

std::string RoleOf(Service& service)
{
    if (!IsRefused([&service] { service.DeleteProfile(kNoProfile); }, "may not change profiles"))
        return "administrator";
    return IsRefused([&service] { service.StopProfile(kNoProfile); }, "may not run or stop") ? "viewer"
                                                                                             : "operator";
}

std::string Rights(const std::string& role)
{
    if (role == "administrator")
        return "read, run, stop and change profiles";
    return role == "operator" ? "read, run and stop profiles, and not change them" : "read, and nothing else";
}

// "CN=" and the last common name of the certificate's subject; empty if there is none.
std::string NameIn(const std::string& file)
{
    const std::unique_ptr<BIO, int (*)(BIO*)> input(BIO_new_file(file.c_str(), "r"), BIO_free);
    if (input == nullptr)
        return "";
    const std::unique_ptr<X509, void (*)(X509*)> certificate(
        PEM_read_bio_X509(input.get(), nullptr, nullptr, nullptr), X509_free);
    if (certificate == nullptr)
        return "";
    X509_NAME* const subject = X509_get_subject_name(certificate.get());
    int last = -1;
    for (int next = X509_NAME_get_index_by_NID(subject, NID_commonName, -1); next >= 0;
         next = X509_NAME_get_index_by_NID(subject, NID_commonName, next))
        last = next;
    if (last < 0)
        return "";
    unsigned char* text = nullptr;
    const int length =
        ASN1_STRING_to_UTF8(&text, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, last)));
    const std::string name = length < 0 ? "" : "CN=" + std::string(text, text + length);
    OPENSSL_free(text);
    return name;
}

void Show(Session& session)
{
    const Access& access = session.Ready();
    Service& service = session.Service();
    const std::vector<Profile> profiles = service.Profiles();
    const std::optional<int> active = service.ActiveProfile();
    const std::string role = RoleOf(service);
    const std::string user = !access.user.empty()         ? access.user
                             : access.certificate.empty() ? ""
                                                          : NameIn(access.certificate);
    const Record record = {{"url", access.url},
                           {"health", "ok"},
                           {"version", VERSION},
                           {"profiles", static_cast<long long>(profiles.size())},
                           {"active", active ? Value(static_cast<long long>(*active)) : Value()},
                           {"user", user.empty() ? Value() : Value(user)},
                           {"role", role},
                           {"may", Rights(role)}};
    List list{{{"what", "WHAT"}, {"value", "VALUE"}}, {}};
    for (const auto& [what, value] : record)
        if (!std::holds_alternative<std::monostate>(value))
            list.rows.push_back({what, value});
    if (session.json)
        session.Out().Result(record, "");
    else
        session.Out().Table(list, "");
}

} // namespace

void AddStatusCommand(CLI::App& app, Session& session)
{
    AddCommand(app, session, "status",
               "Tell whether the service is well, its version, who you are to it and what you may",
               "  varlo-analytics status\n  varlo-analytics --url https://camera.example/ --user guard "
               "status --json",
               [&session] { Show(session); });
}

} // namespace client
