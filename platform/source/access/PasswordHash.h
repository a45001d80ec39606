#pragma once

#include <string>

namespace tarno::osa
{

// Why `hash` is no password hash in the notation of crypt(3) that a password can be held against;
// empty if it is one. Methods that are broken by now (DES, MD5) are refused like unknown ones.
std::string WhyNoPasswordHash(const std::string& hash);

// Whether `password` has this hash. Takes as long as the hash was made to cost, whatever the answer.
bool PasswordMatches(const std::string& password, const std::string& hash);

} // namespace tarno::osa
