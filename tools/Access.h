#pragma once

#include <chrono>
#include <string>

namespace client
{

// Where the service is and how it lets us in.
struct Access
{
    std::string url;
    std::string user; // empty: none
    std::string password;
    std::string authorities; // PEM file; empty: those of the system
    std::string certificate; // PEM file of the client's certificate; empty: none
    std::string key;         // PEM file of its key; empty: in the file of the certificate
    bool insecure = false;   // a password may go where others can read it
    std::chrono::seconds timeout{10};
};

// The whole URL for "http://…", "https://…", or a bare "HOST" or "HOST:PORT". Throws Failure (usage).
std::string WholeUrl(const std::string& text);
// The same; `why` says why it can't be an address, and is empty if it can.
std::string WholeUrl(const std::string& text, std::string& why);

// The host of a whole URL, without port and brackets.
std::string HostOf(const std::string& url);

// Throws Failure (usage) if the access would send a password over plain http to another machine.
void GuardPassword(const Access& access);

// The password of `user`: from the file if one is named, else from VARLO_ANALYTICS_PASSWORD, else asked for
// at the terminal. Throws Failure without a password, or with a file but no user; without a user it is empty.
std::string ReadPassword(const std::string& user, const std::string& file);

} // namespace client
