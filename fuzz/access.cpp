// What decides who gets in: the value of the HTTP field Authorization, and the file of the users.

#include "Expect.h"

#include "access/Passwords.h"
#include "access/Users.h"

#include <openssl/evp.h>

namespace
{
using fuzzing::Expect;

std::string Encoded(const std::string& text)
{
    std::string encoded((text.size() + 2) / 3 * 4 + 1, '\0');
    const int size =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                        reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    encoded.resize(static_cast<std::size_t>(size));
    return encoded;
}

void ReadAuthorization(const std::string& value)
{
    const auto read = tarno::osa::ParseBasicCredentials(value);
    if (!read)
        return;
    Expect(!read->name.empty() && read->name.find(':') == std::string::npos, "a name ends at the colon",
           value);
    const auto again =
        tarno::osa::ParseBasicCredentials("basic   " + Encoded(read->name + ':' + read->password));
    Expect(again && again->name == read->name && again->password == read->password,
           "the same name and password are read again", value);
}

void ReadUsers(const std::string& text)
{
    const tarno::osa::Users users("users", text);
    Expect(!users.Has("") && !users.HashFor("").empty(), "an unknown user costs a hash", text);
    for (const std::string& mistake : users.Mistakes())
        Expect(mistake.starts_with("users:"), "a line that can't be used is named", text);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text = fuzzing::Text(data, size);
    ReadAuthorization(text);
    ReadAuthorization("Basic " + text);
    ReadAuthorization("Basic " + Encoded(text));
    ReadUsers(text);
    return 0;
}
