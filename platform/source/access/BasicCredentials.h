#pragma once

#include <optional>
#include <string>

namespace tarno::osa
{

// A name and a password as a client claims them. The password is wiped when it goes.
struct BasicCredentials
{
    BasicCredentials() = default;
    ~BasicCredentials();
    BasicCredentials(BasicCredentials&&) = default;
    BasicCredentials(const BasicCredentials&) = default;

    std::string name;
    std::string password;
};

// Out of the value of the HTTP field "Authorization". Nothing if it is none of the scheme Basic, or
// nothing that any user could have: no name, a NUL, more than crypt(3) takes.
std::optional<BasicCredentials> ParseBasicCredentials(const std::string& authorization);

} // namespace tarno::osa
