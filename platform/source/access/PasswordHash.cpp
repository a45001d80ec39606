#include "access/PasswordHash.h"

#include <crypt.h>
#include <nettle/memops.h>
#include <string.h>

#include <algorithm>
#include <array>
#include <memory>

namespace tarno::osa
{
namespace
{

struct Method
{
    const char* prefix;
    std::size_t digest; // characters behind the last '$'
};

constexpr std::array kMethods = {
    Method{"$2a$", 53}, Method{"$2b$", 53}, Method{"$2y$", 53}, Method{"$y$", 43},
    Method{"$gy$", 43}, Method{"$7$", 43},  Method{"$6$", 86},  Method{"$5$", 43},
};

constexpr char kWanted[] = "write the line with \"htpasswd -B\" or \"mkpasswd\"";

} // namespace

std::string WhyNoPasswordHash(const std::string& hash)
{
    const auto* const method =
        std::find_if(kMethods.begin(), kMethods.end(),
                     [&hash](const Method& candidate) { return hash.rfind(candidate.prefix, 0) == 0; });
    if (method == kMethods.end())
        return std::string("its hash is of no method that this service takes; ") + kWanted;
    const int setting = crypt_checksalt(hash.c_str());
    const bool whole = hash.size() - 1 - hash.rfind('$') == method->digest;
    if (!whole || setting == CRYPT_SALT_INVALID || setting == CRYPT_SALT_METHOD_DISABLED)
        return std::string("its hash is not whole; ") + kWanted;
    return "";
}

bool PasswordMatches(const std::string& password, const std::string& hash)
{
    const auto room = std::make_unique<crypt_data>(); // 32 KiB
    const char* const made = crypt_r(password.c_str(), hash.c_str(), room.get());
    const std::string own = made == nullptr ? "*" : made;
    explicit_bzero(room.get(), sizeof(crypt_data));
    return own.size() == hash.size() && own.front() != '*' &&
           memeql_sec(own.data(), hash.data(), own.size()) == 1;
}

} // namespace tarno::osa
